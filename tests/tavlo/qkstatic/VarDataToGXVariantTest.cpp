#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tavlo/GXVariantTestSupport.h"
#include "tavlo/VarDataTestSupport.h"
#include "tavlo/qkstatic/vardata.h"

namespace {

using namespace gxvariant_test;
using vardata_test::Logical;
using vardata_test::Sequence;
using vek::ClustersToDictionaries;
using vek::NoDictionaries;
using vek::VariantsToDictionaries;

constexpr const char* kWriter = "tavlo/qkstatic/VarDataToGXVariant";


TEST(VarDataToGXVariant, ExactDescriptorAndData) {
    struct Row {
        const char* what;
        VarData value;
        vek::DictionaryConversion conversion;
        const char* name;
        Words descriptor;
        Bytes data;
    };
    const unsigned char raw[] = {'A', 'B'};
    VarData cluster = VarData::dict();
    cluster.setValue(L"a", Logical(true));
    VarData attributes = VarData::dict();
    attributes.setValue("k", VarData::num(2.0));
    const Bytes two = {0x40, 0, 0, 0, 0, 0, 0, 0};
    const Bytes text = {0, 0, 0, 2, 'A', 'B'};
    const Row rows[] = {
        {"void", VarData(), NoDictionaries, "", {4, 0x00}, {}},
        {"double", VarData::num(1.0), NoDictionaries, "", {4, 0x0A}, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0}},
        {"i8", VarData::num(300.9, 1), NoDictionaries, "", {4, 0x01}, {0x2C}},
        {"i16 truncates toward zero", VarData::num(-2.7, 2), NoDictionaries, "", {4, 0x02}, {0xFF, 0xFE}},
        {"i32", VarData::num(-2, 3), NoDictionaries, "", {4, 0x03}, {0xFF, 0xFF, 0xFF, 0xFE}},
        {"u8", VarData::num(255, 4), NoDictionaries, "", {4, 0x05}, {0xFF}},
        {"u16", VarData::num(65534, 5), NoDictionaries, "", {4, 0x06}, {0xFF, 0xFE}},
        {"u32 through 64 bits", VarData::num(4294967297.0, 6), NoDictionaries, "", {4, 0x07}, {0, 0, 0, 1}},
        {"single", VarData::num(1.5, 7), NoDictionaries, "", {4, 0x09}, {0x3F, 0xC0, 0, 0}},
        {"bit array as u32", VarData::bitArray(5), NoDictionaries, "", {4, 0x07}, {0, 0, 0, 5}},
        {"i32 out of range", VarData::num(1e10, 3), NoDictionaries, "", {4, 0x03}, {0x80, 0, 0, 0}},
        {"named boolean", Logical(true), NoDictionaries, "ok", {8, 0x4021, 0x026F, 0x6B00}, {1}},
        {"odd name", VarData(), NoDictionaries, "abc", {8, 0x4000, 0x0361, 0x6263}, {}},
        {"ansi", VarData("AB"), NoDictionaries, "", {8, 0x30, 0xFFFF, 0xFFFF}, text},
        {"unicode", VarData(L"AB"), NoDictionaries, "", {8, 0x30, 0xFFFF, 0xFFFF}, text},
        {"raw", VarData(raw, 2), NoDictionaries, "", {8, 0x30, 0xFFFF, 0xFFFF}, text},
        {"timestamp", VarData(zo::kel::AbsTime::fromWords(2082844800, 0x8000000000000000ull)), NoDictionaries, "",
         {4, 0x54}, {0, 0, 0, 0, 0x7C, 0x25, 0xB0, 0x80, 0x80, 0, 0, 0, 0, 0, 0, 0}},
        {"array", Sequence({VarData::num(2.0), VarData::num(2.0)}), NoDictionaries, "",
         {14, 0x40, 1, 0xFFFF, 0xFFFF, 4, 0x0A},
         {0, 0, 0, 2, 0x40, 0, 0, 0, 0, 0, 0, 0, 0x40, 0, 0, 0, 0, 0, 0, 0}},
        {"cluster", cluster, ClustersToDictionaries, "", {12, 0x50, 1, 6, 0x4021, 0x0161}, {1}},
        {"variant", attributes, VariantsToDictionaries, "", {4, 0x53},
         {0, 0, 0, 37, 0, 4, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 'k', 0, 0, 0, 20, 0, 4, 0, 0x0A, 0x40, 0, 0, 0, 0, 0, 0, 0,
          0, 0, 0, 0}},
        {"dictionary, unknown conversion", attributes, static_cast<vek::DictionaryConversion>(5), "", {4, 0x00}, {}},
    };
    for (const Row& row : rows) {
        const Written out = Write(row.value, row.conversion, row.name);
        EXPECT_EQ(out.descriptor, row.descriptor) << row.what;
        EXPECT_EQ(out.data, row.data) << row.what;
    }
}

TEST(VarDataToGXVariant, FailuresCarryTheirLine) {
    VarData numberKey = VarData::dict();
    numberKey.setValue(VarData::num(1), VarData::num(2));
    VarData tooMany = VarData::dict();
    for (int i = 0; i < 0x10000; ++i) tooMany.setValue(VarData::num(i), VarData());
    VarData textKeys = VarData::dict();
    for (int i = 0; i < 300; ++i) textKeys.setValue(VarData((std::to_string(i) + std::string(250, 'x')).c_str()), VarData());
    VarData tooManyNamed = VarData::dict();
    for (int i = 0; i < 0x10000; ++i) tooManyNamed.setValue(VarData(std::to_string(i).c_str()), VarData());
    const Site outOfRange = {zo::kel::exception::kOutOfRangeCode, "zo/kel/NumericCast", 67};
    struct Row {
        const char* what;
        VarData value;
        vek::DictionaryConversion conversion;
        std::string name;
        Site expected;
        bool sizeFails = true;  // the size pass compares no element records
    };
    const Row rows[] = {
        {"subtype 9", VarData::num(1, 9), NoDictionaries, "", UnableAt(kWriter, 511)},
        {"empty sequence", VarData::sequence(), NoDictionaries, "", UnableAt(kWriter, 562)},
        {"mixed sequence", Sequence({VarData::num(1), VarData("x")}), NoDictionaries, "", UnableAt(kWriter, 602),
         false},
        {"dictionary without conversion", VarData::dict(), NoDictionaries, "", UnableAt(kWriter, 612)},
        {"number key in a cluster", numberKey, ClustersToDictionaries, "", UnableAt(kWriter, 634)},
        {"number key in a variant", numberKey, VariantsToDictionaries, "", UnableAt(kWriter, 235)},
        {"name of 256 bytes", VarData(), NoDictionaries, std::string(256, 'n'), UnableAt(kWriter, 88)},
        {"pulse", VarData::pulse(), NoDictionaries, "", UnableAt(kWriter, 0)},
        {"record over 0xFFFF bytes", textKeys, ClustersToDictionaries, "", outOfRange},
        {"more than 0xFFFF elements", tooManyNamed, ClustersToDictionaries, "", outOfRange},
    };
    for (const Row& row : rows) {
        const zo::kel::NarrowString name(row.name.c_str());
        unsigned int words = 0, bytes = 0;
        EXPECT_EQ(FailureOf([&] { vek::VarDataToGXVariantLength(row.value, name, row.conversion, words, bytes); }),
                  row.sizeFails ? row.expected : Site{})
            << row.what;
        Words descriptor(0x10000);
        Bytes data(4096);
        EXPECT_EQ(FailureOf([&] {
                      vek::VarDataToGXVariant(row.value, name, row.conversion, descriptor.data(),
                                              descriptor.data() + descriptor.size(), data.data(),
                                              data.data() + data.size());
                  }),
                  row.expected)
            << row.what;
    }
}

// Random values of every kind the writer takes, nested, with what the reader
// gives back for each: texts come back Ansi, so do byte blocks.
class Generator {
public:
    explicit Generator(unsigned int seed) : random_(seed) {}

    // A value and what reading it back gives.
    std::pair<VarData, VarData> Value(vek::DictionaryConversion conversion, int depth) {
        const int kind = Pick(depth > 0 ? 9 : 6);
        switch (kind) {
            case 0: return Same(VarData());
            case 1: return Same(Logical(Pick(2) == 1));
            case 2: return Same(Number());
            case 3: {
                const std::string text = Text();
                const VarData ansi(text.c_str());
                switch (Pick(3)) {
                    case 0: return Same(ansi);
                    case 1: return {VarData(zo::kel::WideString(zo::kel::NarrowString(text.c_str()))), ansi};
                    default: return {VarData(reinterpret_cast<const unsigned char*>(text.data()),
                                             static_cast<unsigned int>(text.size())),
                                     ansi};
                }
            }
            case 4: return Same(VarData(zo::kel::AbsTime::fromWords(static_cast<std::int64_t>(random_()) - (1 << 30),
                                                                    (std::uint64_t{random_()} << 32) | random_())));
            case 5: return Same(VarData::num(Pick(256), 4));
            case 6:
            case 7: {
                VarData written = VarData::dict(), read = VarData::dict();
                for (int i = Pick(4); i > 0; --i) {
                    const std::string key = Text() + "k";
                    auto [value, back] = Value(conversion, depth - 1);
                    // An attribute of no value reads back as a variant without attributes: empty.
                    if (conversion == VariantsToDictionaries && back.GetType() == VarData().GetType()) {
                        back = VarData::dict();
                    }
                    written.setValue(VarData(key.c_str()), value);
                    read.setValue(VarData(key.c_str()), back);
                }
                return {written, read};
            }
            default: {
                // Elements of one host type: numbers of one subtype, or texts.
                VarData written = VarData::sequence(), read = VarData::sequence();
                const bool numbers = Pick(2) == 0;
                const VarData shape = Number();
                for (unsigned int i = 0, n = 1 + Pick(5); i < n; ++i) {
                    const VarData element =
                        numbers ? VarData::num(Pick(100), static_cast<unsigned short>(shape.GetType() >> 16))
                                : VarData(Text().c_str());
                    written.SetElement(i, element);
                    read.SetElement(i, element);
                }
                return {written, read};
            }
        }
    }

private:
    static std::pair<VarData, VarData> Same(const VarData& value) { return {value, value}; }
    unsigned int Pick(unsigned int below) { return random_() % below; }
    std::string Text() { return std::string(Pick(6), static_cast<char>('a' + Pick(26))); }
    // Values each subtype carries exactly.
    VarData Number() {
        switch (const unsigned short subtype = static_cast<unsigned short>(Pick(9))) {
            case 0: return VarData::num(std::ldexp(static_cast<double>(random_()), -7));
            case 1: return VarData::num(static_cast<int>(Pick(256)) - 128, subtype);
            case 2: return VarData::num(static_cast<int>(Pick(65536)) - 32768, subtype);
            case 3: return VarData::num(static_cast<std::int32_t>(random_()), subtype);
            case 7: return VarData::num(Pick(1 << 20) / 4.0, subtype);
            default: return VarData::num(subtype == 4 ? Pick(256) : subtype == 5 ? Pick(65536) : random_(), subtype);
        }
    }

    std::mt19937 random_;
};

// VarDataToGXVariantLength is exactly what VarDataToGXVariant writes; a word
// or a byte less is BufferOverflow with nothing written past the end; and
// what is written reads back as the value.
TEST(VarDataToGXVariant, LengthIsExactAndShortBuffersOverflowInPlace) {
    const Site overflow = {zo::kel::exception::kBufferOverflowCode, kWriter, 40};
    constexpr unsigned short kWordGuard = 0xA5A5;
    constexpr unsigned char kByteGuard = 0x5A;
    Generator generate(2024);
    for (int round = 0; round < 400; ++round) {
        const auto conversion = round % 2 ? ClustersToDictionaries : VariantsToDictionaries;
        const auto [value, expected] = generate.Value(conversion, 3);
        const Written exact = Write(value, conversion);

        // In buffers with guards after the room given: the room is filled exactly.
        const auto attempt = [&](std::size_t words, std::size_t bytes) {
            Words descriptor(words + 8, kWordGuard);
            Bytes data(bytes + 8, kByteGuard);
            const Site site = FailureOf([&] {
                vek::VarDataToGXVariant(value, zo::kel::NarrowString(), conversion, descriptor.data(),
                                        descriptor.data() + words, data.data(), data.data() + bytes);
            });
            EXPECT_EQ(Words(descriptor.begin() + static_cast<long>(words), descriptor.end()), Words(8, kWordGuard));
            EXPECT_EQ(Bytes(data.begin() + static_cast<long>(bytes), data.end()), Bytes(8, kByteGuard));
            return site;
        };
        EXPECT_EQ(attempt(exact.descriptor.size(), exact.data.size()), Site{}) << round;
        EXPECT_EQ(attempt(exact.descriptor.size() - 1, exact.data.size()), overflow) << round;
        if (!exact.data.empty()) {
            EXPECT_EQ(attempt(exact.descriptor.size(), exact.data.size() - 1), overflow) << round;
        }

        const VarData back = Read(exact.descriptor, exact.data, conversion);
        EXPECT_EQ(back.Compare(expected), 0) << round;
        EXPECT_EQ(Write(back, conversion).data, exact.data) << round;
    }
}

}  // namespace
