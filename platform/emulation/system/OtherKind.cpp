#include "OtherKind.h"

#include <string>

namespace {

class OtherKinds : public std::error_category {
public:
    [[nodiscard]] const char* name() const noexcept override { return "kind of file"; }
    [[nodiscard]] std::string message(int kind) const override {
        switch (static_cast<OtherKind>(kind)) {
        case OtherKind::pipe:
            return "It is a pipe, not a regular file";
        case OtherKind::socket:
            return "It is a socket, not a regular file";
        case OtherKind::device:
            break;
        }
        return "It is a device, not a regular file";
    }
};

} // namespace

std::error_code make_error_code(OtherKind kind) noexcept {
    static const OtherKinds kinds;
    return {static_cast<int>(kind), kinds};
}
