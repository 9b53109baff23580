// Host-variant inputs and the failures the conversions report.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tavlo/qkstatic/GXVariantToVarData.h"
#include "tavlo/qkstatic/VarDataToGXVariant.h"
#include "zo/kel/Exception.h"

namespace gxvariant_test {

using Words = std::vector<unsigned short>;
using Bytes = std::vector<unsigned char>;

// Which exception, from where: code, source path and line.
struct Site {
    std::int32_t code = 0;
    std::string file;
    unsigned int line = 0;
    bool operator==(const Site&) const = default;
    friend void PrintTo(const Site& site, std::ostream* out) {
        *out << std::hex << site.code << std::dec << " " << site.file << ":" << site.line;
    }
};

inline Site SyntaxAt(unsigned int line) {
    return {zo::kel::exception::kSyntaxErrorCode, "tavlo/qkstatic/GXVariantToVarData", line};
}
inline Site UnableAt(const char* file, unsigned int line) {
    return {zo::kel::exception::kUnableToConvertCode, file, line};
}

// The site `run` throws from; an empty Site when it returns.
template <class Run>
Site FailureOf(Run run) {
    try {
        run();
    } catch (const zo::kel::exception::Exception& failure) {
        return {failure.getErrorCode(), failure.getFile() ? failure.getFile() : "", failure.getLine()};
    }
    return {};
}

inline VarData Read(const Words& descriptor, const Bytes& data, vek::DictionaryConversion conversion,
                    bool wide = false) {
    zo::kel::NarrowString name;
    return vek::GXVariantToVarData(descriptor.data(), descriptor.data() + descriptor.size(), data.data(),
                                   data.data() + data.size(), conversion, name, wide);
}

struct Written {
    Words descriptor;
    Bytes data;
};

inline Written Write(const VarData& value, vek::DictionaryConversion conversion, const char* name = "") {
    unsigned int words = 0, bytes = 0;
    vek::VarDataToGXVariantLength(value, zo::kel::NarrowString(name), conversion, words, bytes);
    Written out{Words(words), Bytes(bytes)};
    vek::VarDataToGXVariant(value, zo::kel::NarrowString(name), conversion, out.descriptor.data(),
                            out.descriptor.data() + words, out.data.data(), out.data.data() + bytes);
    return out;
}

}  // namespace gxvariant_test
