// Operating-system failures: a message and the raw OS error number. The code
// a C boundary sees is coarser than the number (see getErrorCode).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "zo/kel/Exception.h"

namespace zo::kel::osdep {

class QKDYNAM_API OSException : public zo::kel::exception::Exception {
public:
    OSException();  // "Unknown error", code 0
    OSException(std::string_view message, unsigned int code);

    const char* what() const noexcept override { return message_.c_str(); }
    std::int32_t getErrorCode() const noexcept override;  // always 42
    virtual unsigned int whatcode() const noexcept { return code_; }

private:
    std::string message_;
    unsigned int code_;
};

// An errno-based failure; the message defaults to strerror() of the number.
class QKDYNAM_API PosixError : public OSException {
public:
    PosixError();  // the current errno, read at construction
    explicit PosixError(int error);
    PosixError(std::string_view message, int error);

    // 0 for no error, 7 for a missing file (ENOENT), otherwise 42.
    std::int32_t getErrorCode() const noexcept override;
};

}  // namespace zo::kel::osdep
