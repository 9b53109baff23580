#include "zo/kel/Vector.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "zo/kel/KelTestSupport.h"

namespace {

using namespace kel_test;
using zo::kel::BufferWrapper;
using zo::kel::Vector;
using zo::kel::exception::DeserializationError;
using zo::kel::exception::OutOfRange;

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

    numbers.reserve(1000);
    EXPECT_EQ(numbers.capacity(), 1000u);
    const unsigned int* block = numbers.data();
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
    EXPECT_EQ(Form(Vector<unsigned char>{0xAB, 0xCD}), (Bytes{2, 0, 0, 0, 0xAB, 0xCD}));
    EXPECT_EQ(Form(Vector<unsigned short>{0x0102}), (Bytes{1, 0, 0, 0, 0x02, 0x01}));
    EXPECT_EQ(Form(Vector<unsigned int>{0x01020304}), (Bytes{1, 0, 0, 0, 4, 3, 2, 1}));
    EXPECT_EQ(Form(Vector<double>{1.0}), (Bytes{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
    EXPECT_EQ(Form(Vector<unsigned int>{}), (Bytes{0, 0, 0, 0}));

    // Form's size is serializationSize(): 4 + (4 + 2) + 4.
    const Vector<BufferWrapper> wrappers{View("ab"), BufferWrapper()};
    EXPECT_EQ(Form(wrappers), (Bytes{2, 0, 0, 0, 2, 0, 0, 0, 'a', 'b', 0, 0, 0, 0}));
    ExpectOverflow(Vector<unsigned int>{1, 2}, 7);
    ExpectOverflow(wrappers, 7);
}

TEST(Vector, StringElementsUseTheirOwnForms) {
    EXPECT_EQ(Form(Vector<zo::kel::NarrowString>{"ab", ""}),
              (Bytes{2, 0, 0, 0, 3, 0, 0, 0, 'a', 'b', 0, 1, 0, 0, 0, 0}));
    const Bytes wideForm{2, 0, 0, 0, 2, 0, 0, 0, 'a', 'b', 3, 0, 0, 0, 0xE2, 0x82, 0xAC};
    EXPECT_EQ(Form(Vector<zo::kel::WideString>{L"ab", L"\u20AC"}), wideForm);
    Vector<zo::kel::WideString> decoded{L"keep"};
    Read(decoded, wideForm);
    ASSERT_EQ(decoded.size(), 2u);
    EXPECT_EQ(decoded[1].exactCompare(L"\u20AC"), 0);

    // A narrow count of 0 is malformed: the whole read fails, the old strings stay exactly.
    const auto old = [] { return Vector<zo::kel::NarrowString>{"Old"}; };
    Vector<zo::kel::NarrowString> kept = old();
    EXPECT_THROW(Read(kept, {2, 0, 0, 0, 2, 0, 0, 0, 'x', 0, 0, 0, 0}), DeserializationError);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0].exactCompare("Old"), 0);
    // Ten thousand strings declared in eight bytes: refused before allocating.
    ExpectReadFails(old, {0x10, 0x27, 0, 0, 0, 0, 0, 0}, "./zo/kel/Vector");
}

TEST(Vector, ReadsBackWhatItWrote) {
    Vector<unsigned short> numbers;
    EXPECT_EQ(Read(numbers, {2, 0, 0, 0, 1, 0, 0xFF, 0xFF, 0x77}), 8u);
    EXPECT_EQ(numbers, (Vector<unsigned short>{1, 0xFFFF}));

    const Bytes wrapped{2, 0, 0, 0, 1, 0, 0, 0, 'x', 0, 0, 0, 0};
    Vector<BufferWrapper> wrappers;
    Read(wrappers, wrapped);
    ASSERT_EQ(wrappers.size(), 2u);
    EXPECT_EQ(wrappers[0].Data(), wrapped.data() + 8);  // views into the input
    EXPECT_EQ(wrappers[0].Len(), 1u);
    EXPECT_EQ(wrappers[1].Len(), 0u);

    Vector<double> emptied{1.0, 2.0};
    Read(emptied, {0, 0, 0, 0});
    EXPECT_TRUE(emptied.empty());
    EXPECT_EQ(emptied.data(), nullptr);
}

TEST(Vector, FailedReadKeepsTheOldElements) {
    const auto numbers = [] { return Vector<unsigned int>{7, 8, 9}; };
    constexpr const char* kVector = "./zo/kel/Vector";
    ExpectReadFails(numbers, {1, 0, 0}, kVector);
    ExpectReadFails(numbers, {2, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0}, kVector);
    // 10^9 four-byte elements declared in 12 bytes: refused before allocating.
    ExpectReadFails(numbers, {0x00, 0xCA, 0x9A, 0x3B, 1, 2, 3, 4, 5, 6, 7, 8}, kVector);
    ExpectReadFails([] { return Vector<unsigned char>{1}; }, {0xFF, 0xFF, 0xFF, 0xFF, 1, 2}, kVector);
    // The second wrapper runs past the input midway through the elements.
    ExpectReadFails([] { return Vector<BufferWrapper>{View("ab")}; }, {2, 0, 0, 0, 1, 0, 0, 0, 'x', 9, 0, 0, 0, 'y'},
                    "zo/kel/BufferWrapper");
}

}  // namespace
