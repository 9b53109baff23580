#include "zo/kel/osdep/OSException.h"

#include <cerrno>
#include <cstring>

namespace zo::kel::osdep {

namespace {

constexpr std::int32_t kOSErrorCode = 42;
constexpr std::int32_t kFileNotFoundCode = 7;

std::string ErrorText(int error) {
    char buffer[256];
    // GNU strerror_r returns the text, which may or may not be in buffer.
    return strerror_r(error, buffer, sizeof buffer);
}

}  // namespace

OSException::OSException() : OSException("Unknown error", 0) {}

OSException::OSException(std::string_view message, unsigned int code)
    : Exception(0, nullptr), message_(message), code_(code) {}

std::int32_t OSException::getErrorCode() const noexcept { return kOSErrorCode; }

PosixError::PosixError() : PosixError(errno) {}

PosixError::PosixError(int error) : OSException(ErrorText(error), static_cast<unsigned int>(error)) {}

PosixError::PosixError(std::string_view message, int error)
    : OSException(message, static_cast<unsigned int>(error)) {}

std::int32_t PosixError::getErrorCode() const noexcept {
    switch (whatcode()) {
        case 0: return 0;
        case ENOENT: return kFileNotFoundCode;
        default: return OSException::getErrorCode();
    }
}

}  // namespace zo::kel::osdep
