#include "FailingMemory.h"

#include <cstdint>
#include <link.h>
#include <string_view>
#include <unwind.h>

namespace {

/// The addresses of the device access libraries' code.
struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

int findLibrary(dl_phdr_info* module, std::size_t /*size*/, void* found) {
    if (std::string_view(module->dlpi_name).find("libKvPlatform") == std::string_view::npos) {
        return 0;
    }
    auto& range = *static_cast<Range*>(found);
    range.begin = module->dlpi_addr;
    for (ElfW(Half) index = 0; index < module->dlpi_phnum; ++index) {
        const ElfW(Phdr)& segment = module->dlpi_phdr[index];
        const std::uintptr_t end = module->dlpi_addr + segment.p_vaddr + segment.p_memsz;
        range.end = segment.p_type == PT_LOAD && end > range.end ? end : range.end;
    }
    return 1;
}

const Range& platformCode() {
    static const Range range = [] {
        Range found;
        dl_iterate_phdr(findLibrary, &found);
        return found;
    }();
    return range;
}

_Unwind_Reason_Code lookAtFrame(_Unwind_Context* frame, void* found) {
    const std::uintptr_t address = _Unwind_GetIP(frame);
    if (address < platformCode().begin || address >= platformCode().end) {
        return _URC_NO_REASON;
    }
    *static_cast<bool*>(found) = true;
    return _URC_END_OF_STACK;
}

} // namespace

bool isCalledByPlatform() {
    bool found = false;
    _Unwind_Backtrace(lookAtFrame, &found);
    return found;
}
