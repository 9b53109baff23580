// The zo::kel exception family: every failure of the support library is one of
// these, thrown by value (use ZO_THROW) and caught by reference. Each carries
// the throw site and a fixed 32-bit code that a C boundary can return as is.
// OutOfRange and BoundExceeded share one code on purpose: callers that map
// codes cannot tell an index fault from a size fault.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "qkdynam_platform.h"
#include "zo/kel/SourceSite.h"

namespace zo::kel {
template <typename Char, typename OtherChar, typename WideChar>
class StringBase;
}

namespace zo::kel::exception {

// The library's error codes; all share the high half 0x8ABC.
enum ErrorCode : std::int32_t {
    kSyntaxErrorCode = static_cast<std::int32_t>(0x8ABC7004u),
    kOutOfRangeCode = static_cast<std::int32_t>(0x8ABC7007u),
    kNotFoundCode = static_cast<std::int32_t>(0x8ABC700Au),
    kInvalidArgumentCode = static_cast<std::int32_t>(0x8ABC700Fu),
    kDeserializationErrorCode = static_cast<std::int32_t>(0x8ABC7014u),
    kBufferOverflowCode = static_cast<std::int32_t>(0x8ABC7017u),
    kBufferUnderflowCode = static_cast<std::int32_t>(0x8ABC701Au),
    kInvalidLocaleCode = static_cast<std::int32_t>(0x8ABC7024u),
    kInvalidSequenceCode = static_cast<std::int32_t>(0x8ABC7030u),
    kUnableToConvertCode = static_cast<std::int32_t>(0x8ABC7034u),
};

class QKDYNAM_API Exception : public std::exception {
public:
    // line 0 and a null file mean the site is unknown.
    Exception(unsigned int line, const char* file) noexcept : line_(line), file_(file) {}
    const char* what() const noexcept override = 0;
    virtual std::int32_t getErrorCode() const noexcept = 0;

    unsigned int getLine() const noexcept { return line_; }
    const char* getFile() const noexcept { return file_; }

private:
    unsigned int line_;
    const char* file_;
};

// Declares a family member with a fixed text and code and no data of its own.
#define ZO_KEL_FIXED_EXCEPTION(Name, Base)                                      \
    class QKDYNAM_API Name : public Base {                                      \
    public:                                                                     \
        Name(unsigned int line, const char* file) noexcept : Base(line, file) {} \
        const char* what() const noexcept override;                             \
        std::int32_t getErrorCode() const noexcept override;                    \
    }

ZO_KEL_FIXED_EXCEPTION(OutOfRange, Exception);
ZO_KEL_FIXED_EXCEPTION(BoundExceeded, Exception);
ZO_KEL_FIXED_EXCEPTION(BufferOverflow, Exception);
ZO_KEL_FIXED_EXCEPTION(BufferUnderflow, Exception);
ZO_KEL_FIXED_EXCEPTION(DeserializationError, Exception);
ZO_KEL_FIXED_EXCEPTION(UnableToConvert, Exception);
ZO_KEL_FIXED_EXCEPTION(NotFound, Exception);
ZO_KEL_FIXED_EXCEPTION(InvalidSequence, Exception);
ZO_KEL_FIXED_EXCEPTION(InvalidLocale, Exception);
ZO_KEL_FIXED_EXCEPTION(InvalidArgument, Exception);

#undef ZO_KEL_FIXED_EXCEPTION

// Members that carry a message; what() returns it and stays valid for the
// life of the object. The message is a fixed prefix followed by the reason.
class QKDYNAM_API OutOfRange2 : public OutOfRange {
public:
    OutOfRange2(std::string_view reason, unsigned int line, const char* file);
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

class QKDYNAM_API BoundExceeded2 : public BoundExceeded {
public:
    BoundExceeded2(std::string_view reason, unsigned int line, const char* file);
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

class QKDYNAM_API InvalidArgument2 : public InvalidArgument {
public:
    InvalidArgument2(std::string_view reason, unsigned int line, const char* file);
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

// A parse failure. The message is "SyntaxError" until initialize() gives it
// the offending text ("SyntaxError: " followed by that text).
class QKDYNAM_API SyntaxError : public Exception {
public:
    SyntaxError(unsigned int line, const char* file);
    void initialize(std::string_view text);
    // The wide text is narrowed by the string conversion, which throws for
    // characters it cannot represent.
    void initialize(const StringBase<wchar_t, char, wchar_t>& text);
    const char* what() const noexcept override { return message_.c_str(); }
    std::int32_t getErrorCode() const noexcept override;

private:
    std::string message_;
};

}  // namespace zo::kel::exception
