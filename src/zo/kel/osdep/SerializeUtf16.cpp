#include "zo/kel/osdep/SerializeUtf16.h"

#include <cstdint>

#include "zo/kel/Exception.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/osdep/CharsetConversion.h"
#include "zo/kel/osdep/IConv.h"

namespace zo::kel::osdep {

namespace {
constexpr const char* kUtf16Charset = "UTF-16LE";
}

unsigned int SerializeUtf16::GetUtf16SerializationSize(const WideString& text) {
    SafeInteger<unsigned int> size = 0u;
    for (const wchar_t c : text) size += static_cast<std::uint32_t>(c) < 0x10000 ? 2u : 4u;
    return size.get();
}

unsigned char* SerializeUtf16::SerializeAsUtf16(const WideString& text, unsigned char* out, unsigned char* outEnd) {
    if (text.empty()) return out;
    if (!out || outEnd < out) ZO_THROW(exception::InvalidArgument);
    unsigned char* written = outEnd;
    internal::IConv(text.begin(), text.end(), kWideCharset, out, written, kUtf16Charset, true);
    return written;
}

WideString SerializeUtf16::DeserializeFromUtf16(const unsigned char* first, const unsigned char* last) {
    if (!first || last <= first) return WideString();
    const auto byteCount = static_cast<std::size_t>(last - first);
    if (byteCount % 2 != 0) ZO_THROW(exception::DeserializationError);
    // Every character takes at least one 16-bit unit, so this is an upper bound.
    WideString text(NumericCast<unsigned int>(byteCount / 2), L'\0');
    wchar_t* written = text.end();
    internal::IConv(first, last, kUtf16Charset, text.begin(), written, kWideCharset, true);
    text.resize(static_cast<unsigned int>(written - text.begin()));
    return text;
}

}  // namespace zo::kel::osdep
