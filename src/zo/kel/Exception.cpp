#include "zo/kel/Exception.h"

#include "zo/kel/StringBase.h"

namespace zo::kel::exception {

namespace {

std::string Prefixed(std::string_view prefix, std::string_view reason) {
    std::string message;
    message.reserve(prefix.size() + reason.size());
    message.append(prefix).append(reason);
    return message;
}

}  // namespace

const char* OutOfRange::what() const noexcept { return "Out of range"; }
std::int32_t OutOfRange::getErrorCode() const noexcept { return kOutOfRangeCode; }

// The bare bound fault has no text of its own; it reads as the prefix its
// message-carrying form puts before the reason.
const char* BoundExceeded::what() const noexcept { return "A request was made that would exceed the bounds"; }
std::int32_t BoundExceeded::getErrorCode() const noexcept { return kOutOfRangeCode; }

const char* BufferOverflow::what() const noexcept { return "Buffer overflowed"; }
std::int32_t BufferOverflow::getErrorCode() const noexcept { return kBufferOverflowCode; }

const char* BufferUnderflow::what() const noexcept { return "Buffer underflowed"; }
std::int32_t BufferUnderflow::getErrorCode() const noexcept { return kBufferUnderflowCode; }

const char* DeserializationError::what() const noexcept { return "Failed to deserialize"; }
std::int32_t DeserializationError::getErrorCode() const noexcept { return kDeserializationErrorCode; }

const char* UnableToConvert::what() const noexcept { return "Unable to convert."; }
std::int32_t UnableToConvert::getErrorCode() const noexcept { return kUnableToConvertCode; }

const char* NotFound::what() const noexcept { return "Not found"; }
std::int32_t NotFound::getErrorCode() const noexcept { return kNotFoundCode; }

const char* InvalidSequence::what() const noexcept { return "Invalid UTF8 encoding sequence"; }
std::int32_t InvalidSequence::getErrorCode() const noexcept { return kInvalidSequenceCode; }

const char* InvalidLocale::what() const noexcept { return "Invalid locale"; }
std::int32_t InvalidLocale::getErrorCode() const noexcept { return kInvalidLocaleCode; }

const char* InvalidArgument::what() const noexcept { return "Invalid argument(s)"; }
std::int32_t InvalidArgument::getErrorCode() const noexcept { return kInvalidArgumentCode; }

OutOfRange2::OutOfRange2(std::string_view reason, unsigned int line, const char* file)
    : OutOfRange(line, file), message_(Prefixed("Out of range: ", reason)) {}

BoundExceeded2::BoundExceeded2(std::string_view reason, unsigned int line, const char* file)
    : BoundExceeded(line, file),
      message_(Prefixed("A request was made that would exceed the bounds: ", reason)) {}

InvalidArgument2::InvalidArgument2(std::string_view reason, unsigned int line, const char* file)
    : InvalidArgument(line, file), message_(Prefixed("Invalid argument(s): ", reason)) {}

SyntaxError::SyntaxError(unsigned int line, const char* file) : Exception(line, file), message_("SyntaxError") {}

void SyntaxError::initialize(std::string_view text) {
    message_ = text.empty() ? std::string("SyntaxError") : Prefixed("SyntaxError: ", text);
}

void SyntaxError::initialize(const StringBase<wchar_t, char, wchar_t>& text) {
    const StringBase<char, wchar_t, wchar_t> narrow(text);
    initialize(std::string_view(narrow.c_str(), narrow.length()));
}

std::int32_t SyntaxError::getErrorCode() const noexcept { return kSyntaxErrorCode; }

}  // namespace zo::kel::exception
