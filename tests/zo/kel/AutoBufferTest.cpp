#include "zo/kel/AutoBuffer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using zo::kel::AutoBuffer;
using zo::kel::BufferWrapper;
using zo::kel::exception::BufferOverflow;
using zo::kel::exception::DeserializationError;
using zo::kel::exception::OutOfRange;

using Bytes = std::vector<unsigned char>;

Bytes Contents(const AutoBuffer& buffer) { return Bytes(buffer.Data(), buffer.Data() + buffer.Len()); }

AutoBuffer FromText(std::string_view text) {
    return AutoBuffer(reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned int>(text.size()));
}

TEST(AutoBuffer, GrowthKeepsTenPercentWithAFloorOf128) {
    const unsigned char byte = 7;
    AutoBuffer one;
    one.Append(&byte, 1);
    EXPECT_EQ(one.MemUsage(), 129u);

    const Bytes block(2000, 1);
    AutoBuffer large;
    large.Append(block.data(), 2000);
    EXPECT_EQ(large.MemUsage(), 2200u);

    // Appends within the headroom do not grow; the first one past it grows
    // from the new length.
    AutoBuffer stream;
    for (int i = 0; i < 129; ++i) stream.Append(&byte, 1);
    EXPECT_EQ(stream.MemUsage(), 129u);
    stream.Append(&byte, 1);
    EXPECT_EQ(stream.MemUsage(), 130u + 128u);
    EXPECT_EQ(stream.Len(), 130u);

    AutoBuffer exact(10);
    EXPECT_EQ(exact.MemUsage(), 10u);
    EXPECT_EQ(exact.Len(), 0u);
    EXPECT_NE(exact.Data(), nullptr);

    AutoBuffer null;
    EXPECT_EQ(null.Data(), nullptr);
    EXPECT_EQ(null.Len(), 0u);
    EXPECT_EQ(null.MemUsage(), 0u);
    null.Append(&byte, 0);
    EXPECT_EQ(null.Data(), nullptr);
}

TEST(AutoBuffer, AppendsOfEverySmallSizeKeepEveryByte) {
    std::array<unsigned char, 40> source{};
    for (unsigned int i = 0; i < source.size(); ++i) source[i] = static_cast<unsigned char>(i * 7 + 1);
    AutoBuffer buffer;
    Bytes expected;
    for (unsigned int n = 1; n <= source.size(); ++n) {
        buffer.Append(source.data(), n);
        expected.insert(expected.end(), source.begin(), source.begin() + n);
    }
    EXPECT_EQ(Contents(buffer), expected);
}

TEST(AutoBuffer, CopiesShareUntilWritten) {
    AutoBuffer source = FromText("abc");
    AutoBuffer copy = source;
    EXPECT_EQ(copy.Data(), source.Data());
    EXPECT_EQ(source.ShareCount(), 2);

    copy.Append("d", 1);
    EXPECT_EQ(Contents(source), (Bytes{'a', 'b', 'c'}));
    EXPECT_EQ(Contents(copy), (Bytes{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(source.ShareCount(), 1);
    EXPECT_EQ(copy.ShareCount(), 1);

    // The private copy keeps the recorded capacity and really holds it:
    // appends up to that capacity stay in the block (ASan checks the bytes).
    AutoBuffer reserved(300);
    reserved.Append("x", 1);
    AutoBuffer sharer = reserved;
    sharer.Append("y", 1);
    EXPECT_EQ(sharer.MemUsage(), 300u);
    const Bytes fill(298, 'z');
    sharer.Append(fill.data(), 298);
    EXPECT_EQ(sharer.MemUsage(), 300u);
    EXPECT_EQ(sharer.Len(), 300u);
    EXPECT_EQ(Contents(reserved), Bytes{'x'});

    // Assignment releases the old storage of the target.
    AutoBuffer target = FromText("old");
    target = source;
    EXPECT_EQ(source.ShareCount(), 2);
    target = AutoBuffer();
    EXPECT_EQ(source.ShareCount(), 1);
    EXPECT_EQ(target.Data(), nullptr);
}

TEST(AutoBuffer, EveryWriteUnsharesFirst) {
    const AutoBuffer source = FromText("abcdef");
    const auto unchangedAfter = [&](auto write) {
        AutoBuffer copy = source;
        write(copy);
        return Contents(source) == Bytes{'a', 'b', 'c', 'd', 'e', 'f'} && copy.Data() != source.Data();
    };
    EXPECT_TRUE(unchangedAfter([](AutoBuffer& b) { b.Modify(0, "X", 1); }));
    EXPECT_TRUE(unchangedAfter([](AutoBuffer& b) { b.UnAppend(2); }));
    EXPECT_TRUE(unchangedAfter([](AutoBuffer& b) { b.Skip(2); }));
    EXPECT_TRUE(unchangedAfter([](AutoBuffer& b) { b.appendReverseByteOrder("12", 2); }));
    EXPECT_TRUE(unchangedAfter([](AutoBuffer& b) { b.Reserve(1000); }));
    EXPECT_TRUE(unchangedAfter([](AutoBuffer& b) { b.WritableData()[0] = 'X'; }));
    EXPECT_TRUE(unchangedAfter([](AutoBuffer& b) { b = BufferWrapper(reinterpret_cast<const unsigned char*>("q"), 1); }));

    // Erase of a shared buffer lets go; the other holder keeps its bytes.
    AutoBuffer copy = source;
    copy.Erase();
    EXPECT_EQ(copy.Data(), nullptr);
    EXPECT_EQ(copy.Len(), 0u);
    EXPECT_EQ(source.ShareCount(), 1);
    EXPECT_EQ(source.Len(), 6u);

    // Erase of an unshared buffer keeps the block.
    AutoBuffer alone = FromText("abc");
    const unsigned char* block = alone.Data();
    alone.Erase();
    EXPECT_EQ(alone.Len(), 0u);
    EXPECT_EQ(alone.Data(), block);
    alone.Free();
    EXPECT_EQ(alone.Data(), nullptr);
}

TEST(AutoBuffer, ModifySkipAndUnAppend) {
    AutoBuffer buffer = FromText("abcd");
    buffer.Modify(1, "XY", 2);
    EXPECT_EQ(Contents(buffer), (Bytes{'a', 'X', 'Y', 'd'}));

    // Room made by Skip is filled later with Modify; Skip reserves exactly.
    AutoBuffer frame;
    frame.Skip(4);
    EXPECT_EQ(frame.MemUsage(), 4u);
    frame.Append("body", 4);
    const std::uint32_t size = 4;
    frame.Modify(0, &size, 4);
    EXPECT_EQ(Contents(frame), (Bytes{4, 0, 0, 0, 'b', 'o', 'd', 'y'}));

    // Modify past the end stores the bytes without lengthening; Skip then
    // takes them into the contents.
    AutoBuffer tail = FromText("ab");
    tail.Modify(2, "cd", 2);
    EXPECT_EQ(tail.Len(), 2u);
    tail.Skip(2);
    EXPECT_EQ(Contents(tail), (Bytes{'a', 'b', 'c', 'd'}));

    // Modify beyond the capacity grows by the append rule.
    AutoBuffer empty;
    empty.Modify(1000, "z", 1);
    EXPECT_EQ(empty.MemUsage(), 1001u + 128u);
    EXPECT_EQ(empty.Len(), 0u);

    buffer.UnAppend(3);
    EXPECT_EQ(Contents(buffer), Bytes{'a'});

    AutoBuffer reversed;
    const std::uint32_t word = 0x11223344;
    reversed.appendReverseByteOrder(&word, 4);
    EXPECT_EQ(Contents(reversed), (Bytes{0x11, 0x22, 0x33, 0x44}));

    EXPECT_THROW(buffer.Modify(0xFFFFFFFFu, "ab", 2), OutOfRange);
    EXPECT_THROW(buffer.Skip(0xFFFFFFFFu), OutOfRange);
    EXPECT_EQ(Contents(buffer), Bytes{'a'});
}

TEST(AutoBuffer, ReserveAndComparison) {
    AutoBuffer buffer = FromText("abc");
    buffer.Reserve(10);  // below the capacity: nothing happens
    EXPECT_EQ(buffer.MemUsage(), 3u + 128u);
    buffer.Reserve(500);
    EXPECT_EQ(buffer.MemUsage(), 500u);
    EXPECT_EQ(Contents(buffer), (Bytes{'a', 'b', 'c'}));

    EXPECT_TRUE(FromText("ab") < FromText("abc"));
    EXPECT_FALSE(FromText("abd") < FromText("abc"));
    EXPECT_TRUE(FromText("abc") == FromText("abc"));
    EXPECT_TRUE(AutoBuffer() == AutoBuffer(20));
    EXPECT_FALSE(FromText("a") == AutoBuffer());
}

TEST(AutoBuffer, LinearFormBytes) {
    std::array<unsigned char, 16> out{};
    unsigned char* cursor = out.data();
    AutoBuffer().serialize(cursor, out.data() + out.size());
    FromText("hi").serialize(cursor, out.data() + out.size());
    constexpr std::array<unsigned char, 10> kExpected{0, 0, 0, 0, 2, 0, 0, 0, 'h', 'i'};
    EXPECT_EQ(cursor - out.data(), 10);
    EXPECT_TRUE(std::equal(kExpected.begin(), kExpected.end(), out.begin()));
    EXPECT_EQ(FromText("hi").serializationSize(), 6u);

    unsigned char* tight = out.data();
    EXPECT_THROW(FromText("hi").serialize(tight, out.data() + 5), BufferOverflow);
    EXPECT_EQ(tight, out.data());
    try {
        FromText("hi").serialize(tight, out.data() + 5);
    } catch (const BufferOverflow& overflow) {
        EXPECT_EQ(overflow.getLine(), 0u);
        EXPECT_EQ(overflow.getFile(), nullptr);
    }

    const std::array<unsigned char, 9> input{3, 0, 0, 0, 'x', 'y', 'z', 0xEE, 0xEE};
    const unsigned char* read = input.data();
    AutoBuffer decoded = FromText("previous");
    decoded.deserialize(read, input.data() + input.size());
    EXPECT_EQ(Contents(decoded), (Bytes{'x', 'y', 'z'}));
    EXPECT_EQ(read, input.data() + 7);
}

TEST(AutoBuffer, DeserializeRejectsShortInputAndKeepsTheBuffer) {
    const std::array<unsigned char, 6> truncated{5, 0, 0, 0, 'a', 'b'};
    const std::array<unsigned char, 8> hugeCount{0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c', 'd'};
    for (const auto& [input, size] : {std::pair{truncated.data(), std::size_t{6}}, std::pair{truncated.data(), std::size_t{3}},
                                      std::pair{hugeCount.data(), std::size_t{8}}}) {
        AutoBuffer target = FromText("keep");
        const unsigned char* cursor = input;
        EXPECT_THROW(target.deserialize(cursor, input + size), DeserializationError);
        EXPECT_EQ(cursor, input);
        EXPECT_EQ(Contents(target), (Bytes{'k', 'e', 'e', 'p'}));
    }
}

TEST(AutoBuffer, DeserializeFromItsOwnBytes) {
    AutoBuffer buffer;
    const std::array<unsigned char, 7> form{3, 0, 0, 0, 'a', 'b', 'c'};
    buffer.Append(form.data(), 7);
    const unsigned char* cursor = buffer.Data();
    const AutoBuffer keepAlive = buffer;  // the input must outlive the read
    buffer.deserialize(cursor, buffer.Data() + buffer.Len());
    EXPECT_EQ(Contents(buffer), (Bytes{'a', 'b', 'c'}));

    AutoBuffer alone;
    alone.Append(form.data(), 7);
    const unsigned char* own = alone.Data();
    alone.deserialize(own, alone.Data() + alone.Len());
    EXPECT_EQ(Contents(alone), (Bytes{'a', 'b', 'c'}));
}

// Ring of 10 bytes; a record of 4 + 5 bytes written from offset 6 wraps.
TEST(AutoBuffer, RingFormWrapsAroundTheEnd) {
    std::array<unsigned char, 10> ring{};
    unsigned char* const start = ring.data();
    unsigned char* const end = start + ring.size();
    unsigned char* write = start + 6;
    FromText("hello").circularSerialize(write, start, end);
    constexpr std::array<unsigned char, 10> kRing{'h', 'e', 'l', 'l', 'o', 0, 5, 0, 0, 0};
    EXPECT_EQ(ring, kRing);
    EXPECT_EQ(write, start + 5);

    const unsigned char* read = start + 6;
    EXPECT_EQ(AutoBuffer::GetCircularDeserializationSize(read, start, end), 5u);
    AutoBuffer decoded;
    decoded.circularDeserialize(read, start, end);
    EXPECT_EQ(decoded, FromText("hello"));
    EXPECT_EQ(read, start + 5);

    // The count itself may wrap; a record ending exactly at the end lands on the start.
    std::array<unsigned char, 9> exact{};
    unsigned char* at = exact.data() + 7;
    FromText("abc").circularSerialize(at, exact.data(), exact.data() + 9);
    constexpr std::array<unsigned char, 9> kExact{0, 0, 'a', 'b', 'c', 0, 0, 3, 0};
    EXPECT_EQ(exact, kExact);
    EXPECT_EQ(at, exact.data() + 5);
    // A 2-byte record written from offset 3 ends exactly at the end of the ring.
    const unsigned char* from = exact.data() + 3;
    unsigned char* landing = exact.data() + 3;
    FromText("xy").circularSerialize(landing, exact.data(), exact.data() + 9);
    EXPECT_EQ(landing, exact.data());
    decoded.circularDeserialize(from, exact.data(), exact.data() + 9);
    EXPECT_EQ(decoded, FromText("xy"));
    EXPECT_EQ(from, exact.data());
}

TEST(AutoBuffer, RingReadsRejectBadRingsAndCounts) {
    std::array<unsigned char, 8> ring{6, 0, 0, 0, 'a', 'b', 'c', 'd'};
    const unsigned char* const start = ring.data();
    AutoBuffer target = FromText("keep");
    const auto rejected = [&](const unsigned char* cursor, const unsigned char* ringStart, const unsigned char* ringEnd) {
        const unsigned char* before = cursor;
        try {
            target.circularDeserialize(cursor, ringStart, ringEnd);
        } catch (const DeserializationError& error) {
            return cursor == before && target == FromText("keep") && std::string_view(error.getFile()) == "zo/kel/AutoBuffer";
        }
        return false;
    };
    EXPECT_TRUE(rejected(start, start, start + 8));      // 4 + 6 bytes do not fit a ring of 8
    EXPECT_TRUE(rejected(start, start, start + 3));      // no room for the count
    EXPECT_TRUE(rejected(start + 8, start, start + 8));  // cursor outside the ring
    EXPECT_TRUE(rejected(start, start + 4, start + 8));
    EXPECT_THROW(AutoBuffer::GetCircularDeserializationSize(start, start, start + 2), DeserializationError);

    unsigned char* write = ring.data();
    EXPECT_THROW(FromText("abcde").circularSerialize(write, ring.data(), ring.data() + 8), BufferOverflow);
    EXPECT_THROW(FromText("").circularSerializeLength(write, ring.data(), ring.data() + 3), BufferOverflow);
}

TEST(AutoBuffer, SharedCopiesAcrossThreadsCountExactly) {
    const AutoBuffer source = FromText("shared bytes");
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&source] {
            for (int i = 0; i < 20000; ++i) {
                AutoBuffer copy = source;
                if (i % 64 == 0) copy.Append("!", 1);  // private copy, read of the shared bytes
                AutoBuffer moved = std::move(copy);
                if (moved.Len() < source.Len()) std::abort();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(source.ShareCount(), 1);
    EXPECT_EQ(source, FromText("shared bytes"));
}

}  // namespace
