#include "zo/kel/Vector.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <vector>

namespace {

using zo::kel::BufferWrapper;
using zo::kel::Vector;
using zo::kel::exception::BufferOverflow;
using zo::kel::exception::DeserializationError;
using zo::kel::exception::OutOfRange;

template <typename T, std::size_t N>
Vector<T> Serialized(const std::array<unsigned char, N>& bytes, std::size_t* consumed = nullptr) {
    Vector<T> vector;
    const unsigned char* cursor = bytes.data();
    vector.deserialize(cursor, bytes.data() + N);
    if (consumed) *consumed = static_cast<std::size_t>(cursor - bytes.data());
    return vector;
}

template <typename T>
std::vector<unsigned char> Form(const Vector<T>& vector) {
    std::vector<unsigned char> out(vector.serializationSize());
    unsigned char* cursor = out.data();
    vector.serialize(cursor, out.data() + out.size());
    EXPECT_EQ(cursor, out.data() + out.size());
    return out;
}

TEST(Vector, ImplValueInitialisesAndChecksTheBlockSize) {
    const Vector<double> zeros(3u);
    ASSERT_EQ(zeros.size(), 3u);
    EXPECT_EQ(zeros.capacity(), 3u);
    for (double value : zeros) EXPECT_EQ(value, 0.0);

    const Vector<unsigned int> none(0u);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.data(), nullptr);

    EXPECT_THROW(Vector<unsigned int>(0x40000000u), OutOfRange);  // 4 GiB does not fit 32 bits
    EXPECT_THROW(Vector<double>::Impl(0x20000000u), OutOfRange);
}

TEST(Vector, WorksLikeAStandardContainer) {
    Vector<unsigned int> numbers;
    for (unsigned int i = 0; i < 100; ++i) numbers.push_back(i);
    EXPECT_EQ(numbers.size(), 100u);
    EXPECT_EQ(std::accumulate(numbers.begin(), numbers.end(), 0u), 4950u);
    EXPECT_EQ(numbers[42], 42u);
    EXPECT_EQ(numbers.back(), 99u);

    // An element of the vector itself may be appended while it grows.
    Vector<std::string> texts;
    texts.push_back(std::string(40, 'a'));
    for (int i = 0; i < 20; ++i) texts.push_back(texts.front());
    EXPECT_EQ(texts.size(), 21u);
    EXPECT_EQ(texts.back(), std::string(40, 'a'));

    Vector<std::string> copy = texts;
    copy[0] = "changed";
    EXPECT_EQ(texts[0], std::string(40, 'a'));
    EXPECT_FALSE(copy == texts);

    const unsigned int* block = nullptr;
    numbers.reserve(1000);
    EXPECT_EQ(numbers.capacity(), 1000u);
    block = numbers.data();
    numbers.clear();
    EXPECT_TRUE(numbers.empty());
    EXPECT_EQ(numbers.data(), block);

    const Vector<unsigned short> listed{1, 2, 3};
    EXPECT_EQ(listed, (Vector<unsigned short>{1, 2, 3}));
    Vector<std::string> moved = std::move(copy);
    EXPECT_EQ(moved[0], "changed");
    EXPECT_TRUE(copy.empty());
}

TEST(Vector, FormBytesPerElementType) {
    EXPECT_EQ(Form(Vector<unsigned char>{0xAB, 0xCD}), (std::vector<unsigned char>{2, 0, 0, 0, 0xAB, 0xCD}));
    EXPECT_EQ(Form(Vector<unsigned short>{0x0102}), (std::vector<unsigned char>{1, 0, 0, 0, 0x02, 0x01}));
    EXPECT_EQ(Form(Vector<unsigned int>{0x01020304}), (std::vector<unsigned char>{1, 0, 0, 0, 4, 3, 2, 1}));
    EXPECT_EQ(Form(Vector<double>{1.0}), (std::vector<unsigned char>{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
    EXPECT_EQ(Form(Vector<unsigned int>{}), (std::vector<unsigned char>{0, 0, 0, 0}));

    const std::array<unsigned char, 2> ab{'a', 'b'};
    const Vector<BufferWrapper> wrappers{BufferWrapper(ab.data(), 2), BufferWrapper()};
    EXPECT_EQ(wrappers.serializationSize(), 4u + 6u + 4u);
    EXPECT_EQ(Form(wrappers), (std::vector<unsigned char>{2, 0, 0, 0, 2, 0, 0, 0, 'a', 'b', 0, 0, 0, 0}));

    std::array<unsigned char, 7> small{};
    unsigned char* cursor = small.data();
    const Vector<unsigned int> two{1, 2};
    EXPECT_THROW(two.serialize(cursor, small.data() + small.size()), BufferOverflow);
    EXPECT_THROW(wrappers.serialize(cursor, small.data() + small.size()), BufferOverflow);
    EXPECT_EQ(cursor, small.data());
}

TEST(Vector, StringElementsUseTheirOwnForms) {
    const Vector<zo::kel::NarrowString> narrow{"ab", ""};
    EXPECT_EQ(Form(narrow), (std::vector<unsigned char>{2, 0, 0, 0, 3, 0, 0, 0, 'a', 'b', 0, 1, 0, 0, 0, 0}));
    const Vector<zo::kel::WideString> wide{L"ab", L"\u20AC"};
    const std::vector<unsigned char> wideForm{2, 0, 0, 0, 2, 0, 0, 0, 'a', 'b', 3, 0, 0, 0, 0xE2, 0x82, 0xAC};
    EXPECT_EQ(Form(wide), wideForm);

    Vector<zo::kel::WideString> decoded{L"keep"};
    const unsigned char* cursor = wideForm.data();
    decoded.deserialize(cursor, wideForm.data() + wideForm.size());
    ASSERT_EQ(decoded.size(), 2u);
    EXPECT_EQ(decoded[1].exactCompare(L"\u20AC"), 0);

    // A narrow count of 0 is malformed: the whole read fails, the old strings stay.
    Vector<zo::kel::NarrowString> kept{"Old"};
    const std::array<unsigned char, 13> bad{2, 0, 0, 0, 2, 0, 0, 0, 'x', 0, 0, 0, 0};
    const unsigned char* read = bad.data();
    EXPECT_THROW(kept.deserialize(read, bad.data() + bad.size()), DeserializationError);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0].exactCompare("Old"), 0);

    // Ten thousand strings declared in eight bytes: refused before allocating.
    const std::array<unsigned char, 8> many{0x10, 0x27, 0, 0, 0, 0, 0, 0};
    read = many.data();
    EXPECT_THROW(kept.deserialize(read, many.data() + many.size()), DeserializationError);
}

TEST(Vector, ReadsBackWhatItWrote) {
    std::size_t consumed = 0;
    const auto numbers = Serialized<unsigned short>(std::array<unsigned char, 9>{2, 0, 0, 0, 1, 0, 0xFF, 0xFF, 0x77}, &consumed);
    EXPECT_EQ(numbers, (Vector<unsigned short>{1, 0xFFFF}));
    EXPECT_EQ(consumed, 8u);

    const std::array<unsigned char, 13> wrapped{2, 0, 0, 0, 1, 0, 0, 0, 'x', 0, 0, 0, 0};
    const auto wrappers = Serialized<BufferWrapper>(wrapped);
    ASSERT_EQ(wrappers.size(), 2u);
    EXPECT_EQ(wrappers[0].Data(), wrapped.data() + 8);  // views into the input
    EXPECT_EQ(wrappers[0].Len(), 1u);
    EXPECT_EQ(wrappers[1].Len(), 0u);

    Vector<double> emptied{1.0, 2.0};
    const std::array<unsigned char, 4> zero{};
    const unsigned char* cursor = zero.data();
    emptied.deserialize(cursor, zero.data() + 4);
    EXPECT_TRUE(emptied.empty());
    EXPECT_EQ(emptied.data(), nullptr);
}

TEST(Vector, FailedReadKeepsTheOldElements) {
    const auto rejects = [](auto keep, const auto& bytes) {
        auto vector = keep;
        const unsigned char* cursor = bytes.data();
        EXPECT_THROW(vector.deserialize(cursor, bytes.data() + bytes.size()), DeserializationError);
        EXPECT_EQ(cursor, bytes.data());
        EXPECT_EQ(vector, keep);
    };
    const Vector<unsigned int> numbers{7, 8, 9};
    rejects(numbers, std::array<unsigned char, 3>{1, 0, 0});
    rejects(numbers, std::array<unsigned char, 11>{2, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0});
    // 10^9 four-byte elements declared in 12 bytes: refused before allocating.
    rejects(numbers, std::array<unsigned char, 12>{0x00, 0xCA, 0x9A, 0x3B, 1, 2, 3, 4, 5, 6, 7, 8});
    rejects(Vector<unsigned char>{1}, std::array<unsigned char, 6>{0xFF, 0xFF, 0xFF, 0xFF, 1, 2});

    // The second wrapper runs past the input midway through the elements.
    const std::array<unsigned char, 2> ab{'a', 'b'};
    rejects(Vector<BufferWrapper>{BufferWrapper(ab.data(), 2)},
            std::array<unsigned char, 14>{2, 0, 0, 0, 1, 0, 0, 0, 'x', 9, 0, 0, 0, 'y'});
}

}  // namespace
