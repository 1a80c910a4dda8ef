#include "ElementNames.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

struct TypeNameRow {
    std::string_view elementName;
    /// Whether an element name that only begins so is meant too.
    bool prefix;
    const char* typeName;
};

/// Only "IoFpga" stands for numbered elements too.
constexpr std::array typeNames = {TypeNameRow{"UserFirmware", false, "Firmware"},
                                  TypeNameRow{"CnFirmware", false, "Firmware"},
                                  TypeNameRow{"HypervisorFirmware", false, "Hypervisor"},
                                  TypeNameRow{"UserFpga", false, "FPGA"},
                                  TypeNameRow{"IoFpga", true, "FPGA"},
                                  TypeNameRow{"UserIpl", false, "Bootloader"},
                                  TypeNameRow{"CnIpl", false, "Bootloader"},
                                  TypeNameRow{"UserCpld", false, "CPLD"},
                                  TypeNameRow{"IoCpld", false, "CPLD"}};

constexpr std::uint32_t subNumberShift = 24;

KvCString typeNameOf(const KvCString& elementName) {
    const std::string_view name = elementName.view();
    const auto* row = std::find_if(typeNames.begin(), typeNames.end(), [name](const TypeNameRow& candidate) {
        return candidate.prefix ? name.starts_with(candidate.elementName) : name == candidate.elementName;
    });
    return row != typeNames.end() ? KvCString(row->typeName) : elementName;
}

} // namespace

void makeElementNames(const KvCString& boardName, const KvCString& boardType, std::uint32_t serialNumber,
                      const KvCString& elementName, KvCString& typeName, KvCString& displayName) {
    typeName = typeNameOf(elementName);
    displayName = boardName.isEmpty() ? boardType : boardName;
    if (serialNumber != 0) {
        const std::uint32_t subNumber = serialNumber >> subNumberShift;
        displayName += ", SN ";
        if (subNumber != 0) {
            displayName += KvCString(withoutSubNumber(serialNumber));
            displayName += "(";
            displayName += KvCString(subNumber);
            displayName += ")";
        } else {
            displayName += KvCString(serialNumber);
        }
    }
    displayName += ", ";
    displayName += typeName;
}
