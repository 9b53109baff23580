// Arbitrary bytes as a host value: the first byte picks the dictionary
// conversion (low two bits) and wide strings (bit 2), the second how many
// descriptor words follow (host order); the rest is the data. Whatever
// converts is written back with VarDataToGXVariant into buffers of exactly
// VarDataToGXVariantLength; with narrow strings that reads back equal and
// writes the same words and bytes again (unless the shorter written form no
// longer pays for the values the input did: a SyntaxError then).
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "FuzzCheck.h"
#include "tavlo/qkstatic/GXVariantToVarData.h"
#include "tavlo/qkstatic/VarDataToGXVariant.h"

using fuzzcheck::Require;

namespace {

struct Host {
    std::vector<unsigned short> descriptor;
    std::vector<unsigned char> data;
};

VarData Read(const Host& host, vek::DictionaryConversion conversion, bool wide) {
    zo::kel::NarrowString name;
    return vek::GXVariantToVarData(host.descriptor.data(), host.descriptor.data() + host.descriptor.size(),
                                   host.data.data(), host.data.data() + host.data.size(), conversion, name, wide);
}

Host Write(const VarData& value, vek::DictionaryConversion conversion) {
    unsigned int words = 0, bytes = 0;
    vek::VarDataToGXVariantLength(value, zo::kel::NarrowString(), conversion, words, bytes);
    Host host{std::vector<unsigned short>(words), std::vector<unsigned char>(bytes)};
    vek::VarDataToGXVariant(value, zo::kel::NarrowString(), conversion, host.descriptor.data(),
                            host.descriptor.data() + words, host.data.data(), host.data.data() + bytes);
    return host;
}

std::size_t InputBytes(const Host& host) { return 2 * host.descriptor.size() + host.data.size(); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const auto conversion = static_cast<vek::DictionaryConversion>(data[0] & 3);
    const bool wide = (data[0] & 4) != 0;
    const std::size_t words = std::min<std::size_t>(data[1], (size - 2) / 2);
    Host input{std::vector<unsigned short>(words), std::vector<unsigned char>(data + 2 + 2 * words, data + size)};
    if (words) std::memcpy(input.descriptor.data(), data + 2, 2 * words);

    VarData value;
    try {
        value = Read(input, conversion, wide);
    } catch (const zo::kel::exception::Exception&) {
        return 0;
    }
    Host written;
    try {
        written = Write(value, conversion);
    } catch (const zo::kel::exception::Exception&) {
        return 0;  // a value the host has no type for, such as an empty array
    }
    if (wide) {
        // Wide texts are narrowed on the way out; only their ASCII comes back the same.
        try {
            Read(written, conversion, wide);
        } catch (const zo::kel::exception::Exception&) {
        }
        return 0;
    }
    VarData back;
    try {
        back = Read(written, conversion, wide);
    } catch (const zo::kel::exception::SyntaxError&) {
        // The value budget grows with the input: only a written form shorter
        // than the input may run out of it.
        Require(InputBytes(written) < InputBytes(input));
        return 0;
    }
    Require(back.Compare(value) == 0);
    const Host again = Write(back, conversion);
    Require(again.descriptor == written.descriptor && again.data == written.data);
    return 0;
}
