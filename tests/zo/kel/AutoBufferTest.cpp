#include "zo/kel/AutoBuffer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "zo/kel/KelTestSupport.h"

namespace {

using namespace kel_test;
using zo::kel::AutoBuffer;
using zo::kel::BufferWrapper;
using zo::kel::exception::BufferOverflow;
using zo::kel::exception::DeserializationError;
using zo::kel::exception::OutOfRange;

AutoBuffer FromText(std::string_view text) { return AutoBuffer(View(text)); }
// Length and capacity.
using Sizes = std::pair<unsigned int, unsigned int>;
Sizes SizesOf(const AutoBuffer& buffer) { return {buffer.Len(), buffer.MemUsage()}; }

TEST(AutoBuffer, GrowthKeepsTenPercentWithAFloorOf128) {
    const unsigned char byte = 7;
    const Bytes block(2000, 1);
    AutoBuffer one, large, stream, null;
    one.Append(&byte, 1);
    large.Append(block.data(), 2000);
    EXPECT_EQ(SizesOf(one), Sizes(1, 129));
    EXPECT_EQ(SizesOf(large), Sizes(2000, 2200));
    // Appends within the headroom do not grow; the first one past it grows from the new length.
    for (int i = 0; i < 129; ++i) stream.Append(&byte, 1);
    EXPECT_EQ(stream.MemUsage(), 129u);
    stream.Append(&byte, 1);
    EXPECT_EQ(SizesOf(stream), Sizes(130, 130 + 128));

    const AutoBuffer exact(10);
    EXPECT_EQ(SizesOf(exact), Sizes(0, 10));
    EXPECT_NE(exact.Data(), nullptr);
    EXPECT_EQ(null.Data(), nullptr);
    EXPECT_EQ(SizesOf(null), Sizes(0, 0));
    null.Append(&byte, 0);  // owns nothing still
    EXPECT_EQ(null.Data(), nullptr);
    EXPECT_EQ(null.ShareCount(), 0);
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
    EXPECT_EQ(std::pair(Contents(source), Contents(copy)), std::pair(ToBytes("abc"), ToBytes("abcd")));
    EXPECT_EQ(std::pair(source.ShareCount(), copy.ShareCount()), std::pair(1, 1));

    // The private copy keeps the recorded capacity and really holds it:
    // appends up to that capacity stay in the block (ASan checks the bytes).
    AutoBuffer reserved(300);
    reserved.Append("x", 1);
    AutoBuffer sharer = reserved;
    sharer.Append("y", 1);
    EXPECT_EQ(sharer.MemUsage(), 300u);
    const Bytes fill(298, 'z');
    sharer.Append(fill.data(), 298);
    EXPECT_EQ(SizesOf(sharer), Sizes(300, 300));
    EXPECT_EQ(Contents(reserved), ToBytes("x"));

    // Assignment releases the old storage of the target.
    AutoBuffer target = FromText("old");
    target = source;
    EXPECT_EQ(source.ShareCount(), 2);
    target = AutoBuffer();
    EXPECT_EQ(source.ShareCount(), 1);
    EXPECT_EQ(target.Data(), nullptr);
}

// A buffer may own nothing (no storage) or storage without a block; both
// read as empty and take writes like any other buffer.
TEST(AutoBuffer, BuffersWithoutStorageOrBlock) {
    AutoBuffer nothing;
    const AutoBuffer copyOfNothing = nothing;
    EXPECT_EQ(copyOfNothing.Data(), nullptr);
    EXPECT_EQ(copyOfNothing.ShareCount(), 0);
    EXPECT_EQ(nothing.WritableData(), nullptr);
    nothing.Erase();
    nothing.Free();
    EXPECT_EQ(nothing.Data(), nullptr);

    AutoBuffer noBlock(0u);
    EXPECT_EQ(SizesOf(noBlock), Sizes(0, 0));
    EXPECT_EQ(noBlock.ShareCount(), 1);
    AutoBuffer sharer = noBlock;
    sharer.Append("ab", 2);
    noBlock = View("xyz");
    EXPECT_EQ(std::pair(Contents(noBlock), Contents(sharer)), std::pair(ToBytes("xyz"), ToBytes("ab")));

    // The private copy of a shared, still empty block keeps its capacity.
    AutoBuffer reserved(16u);
    AutoBuffer reservedSharer = reserved;
    reservedSharer.Append("c", 1);
    EXPECT_EQ(SizesOf(reservedSharer), Sizes(1, 16));
    EXPECT_EQ(SizesOf(reserved), Sizes(0, 16));
}

// Writes of no bytes change nothing, and a shared buffer stays shared.
TEST(AutoBuffer, EmptyWritesChangeNothing) {
    const AutoBuffer source = FromText("abc");
    AutoBuffer copy = source;
    copy.Append(nullptr, 0);
    copy.appendReverseByteOrder(nullptr, 0);
    EXPECT_EQ(copy.ShareCount(), 2);
    copy.Modify(3, nullptr, 0);  // unshares, writes nothing
    EXPECT_EQ(std::pair(Contents(copy), Contents(source)), std::pair(ToBytes("abc"), ToBytes("abc")));
}

TEST(AutoBuffer, EveryWriteUnsharesFirst) {
    const AutoBuffer source = FromText("abcdef");
    const std::function<void(AutoBuffer&)> writes[] = {
        [](AutoBuffer& b) { b.Modify(0, "X", 1); },
        [](AutoBuffer& b) { b.UnAppend(2); },
        [](AutoBuffer& b) { b.Skip(2); },
        [](AutoBuffer& b) { b.appendReverseByteOrder("12", 2); },
        [](AutoBuffer& b) { b.Reserve(1000); },
        [](AutoBuffer& b) { b.WritableData()[0] = 'X'; },
        [](AutoBuffer& b) { b = View("q"); },
    };
    for (const auto& write : writes) {
        AutoBuffer copy = source;
        write(copy);
        EXPECT_EQ(Contents(source), ToBytes("abcdef"));
        EXPECT_NE(copy.Data(), source.Data());
    }

    // Erase of a shared buffer lets go; the other holder keeps its bytes.
    AutoBuffer copy = source;
    copy.Erase();
    EXPECT_EQ(copy.Data(), nullptr);
    EXPECT_EQ(copy.Len(), 0u);
    EXPECT_EQ(std::pair(source.ShareCount(), source.Len()), std::pair(1, 6u));

    // Erase of an unshared buffer keeps the block.
    AutoBuffer alone = FromText("abc");
    const unsigned char* block = alone.Data();
    alone.Erase();
    EXPECT_EQ(std::pair(alone.Data(), alone.Len()), std::pair(block, 0u));
    alone.Free();
    EXPECT_EQ(alone.Data(), nullptr);
}

TEST(AutoBuffer, ModifySkipAndUnAppend) {
    AutoBuffer buffer = FromText("abcd");
    buffer.Modify(1, "XY", 2);
    EXPECT_EQ(Contents(buffer), ToBytes("aXYd"));

    // Room made by Skip is filled later with Modify; Skip reserves exactly.
    AutoBuffer frame;
    frame.Skip(4);
    EXPECT_EQ(SizesOf(frame), Sizes(4, 4));
    frame.Append("body", 4);
    const std::uint32_t size = 4;
    frame.Modify(0, &size, 4);
    EXPECT_EQ(Contents(frame), (Bytes{4, 0, 0, 0, 'b', 'o', 'd', 'y'}));

    // Modify past the end stores the bytes without lengthening; Skip then takes them into the contents.
    AutoBuffer tail = FromText("ab");
    tail.Modify(2, "cd", 2);
    EXPECT_EQ(tail.Len(), 2u);
    tail.Skip(2);
    EXPECT_EQ(Contents(tail), ToBytes("abcd"));

    // Modify beyond the capacity grows by the append rule.
    AutoBuffer empty;
    empty.Modify(1000, "z", 1);
    EXPECT_EQ(SizesOf(empty), Sizes(0, 1001 + 128));

    buffer.UnAppend(3);
    EXPECT_EQ(Contents(buffer), ToBytes("a"));
    AutoBuffer reversed;
    const std::uint32_t word = 0x11223344;
    reversed.appendReverseByteOrder(&word, 4);
    EXPECT_EQ(Contents(reversed), (Bytes{0x11, 0x22, 0x33, 0x44}));

    EXPECT_THROW(buffer.Modify(0xFFFFFFFFu, "ab", 2), OutOfRange);
    EXPECT_THROW(buffer.Skip(0xFFFFFFFFu), OutOfRange);
    EXPECT_EQ(Contents(buffer), ToBytes("a"));
}

TEST(AutoBuffer, ReserveAndComparison) {
    AutoBuffer buffer = FromText("abc");
    buffer.Reserve(10);  // below the capacity: nothing happens
    EXPECT_EQ(buffer.MemUsage(), 3u + 128u);
    buffer.Reserve(500);
    EXPECT_EQ(std::pair(Contents(buffer), buffer.MemUsage()), std::pair(ToBytes("abc"), 500u));

    EXPECT_TRUE(FromText("ab") < FromText("abc"));
    EXPECT_FALSE(FromText("abd") < FromText("abc"));
    EXPECT_TRUE(FromText("abc") == FromText("abc"));
    EXPECT_TRUE(AutoBuffer() == AutoBuffer(20));
    EXPECT_FALSE(FromText("a") == AutoBuffer());
}

TEST(AutoBuffer, LinearForm) {
    EXPECT_EQ(Form(AutoBuffer()), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(Form(FromText("hi")), (Bytes{2, 0, 0, 0, 'h', 'i'}));  // and its serializationSize is 6
    ExpectOverflow(FromText("hi"), 5);

    AutoBuffer decoded = FromText("previous");
    const std::size_t taken = Read(decoded, Bytes{3, 0, 0, 0, 'x', 'y', 'z', 0xEE, 0xEE});
    EXPECT_EQ(std::pair(Contents(decoded), taken), std::pair(ToBytes("xyz"), std::size_t{7}));

    // Short input: the site is the wrapper's reader.
    const auto keep = [] { return FromText("keep"); };
    ExpectReadFails(keep, {5, 0, 0, 0, 'a', 'b'}, "zo/kel/BufferWrapper");
    ExpectReadFails(keep, {5, 0, 0}, "zo/kel/BufferWrapper");
    ExpectReadFails(keep, {0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c', 'd'}, "zo/kel/BufferWrapper");
}

// Assignment copies the bytes, wherever they lie: a literal below the heap,
// a local array above it.
TEST(AutoBuffer, AssignmentCopiesTheBytes) {
    AutoBuffer buffer = FromText("old contents");
    unsigned char local[] = {'l', 'o', 'c'};
    buffer = BufferWrapper(local, 3);
    local[0] = 'X';
    EXPECT_EQ(Contents(buffer), ToBytes("loc"));
    buffer = View("literal");
    EXPECT_EQ(Contents(buffer), ToBytes("literal"));
}

TEST(AutoBuffer, DeserializeFromItsOwnBytes) {
    const Bytes form{3, 0, 0, 0, 'a', 'b', 'c'};
    for (const bool shared : {true, false}) {
        AutoBuffer buffer(form.data(), 7);
        const AutoBuffer keepAlive = shared ? buffer : AutoBuffer();  // the input must outlive the read
        const unsigned char* cursor = buffer.Data();
        buffer.deserialize(cursor, buffer.Data() + buffer.Len());
        EXPECT_EQ(Contents(buffer), ToBytes("abc"));
    }
}

// Writes `text` as a record at `offset` of a zeroed ring of `size` bytes;
// returns the ring and where the cursor ended.
std::pair<Bytes, std::ptrdiff_t> RingWith(std::string_view text, std::size_t size, std::size_t offset) {
    Bytes ring(size);
    unsigned char* cursor = ring.data() + offset;
    FromText(text).circularSerialize(cursor, ring.data(), ring.data() + size);
    return {ring, cursor - ring.data()};
}

// Reads the record at `offset`; returns it and where the cursor ended.
std::pair<AutoBuffer, std::ptrdiff_t> RecordAt(const Bytes& ring, std::size_t offset) {
    const unsigned char* cursor = ring.data() + offset;
    AutoBuffer record;
    record.circularDeserialize(cursor, ring.data(), ring.data() + ring.size());
    return {record, cursor - ring.data()};
}

TEST(AutoBuffer, RingFormWrapsAroundTheEnd) {
    // A record of 4 + 5 bytes written from offset 6 of 10 wraps.
    const auto [ring, written] = RingWith("hello", 10, 6);
    EXPECT_EQ(ring, (Bytes{'h', 'e', 'l', 'l', 'o', 0, 5, 0, 0, 0}));
    EXPECT_EQ(written, 5);
    EXPECT_EQ(AutoBuffer::GetCircularDeserializationSize(ring.data() + 6, ring.data(), ring.data() + 10), 5u);
    EXPECT_EQ(RecordAt(ring, 6), std::pair(FromText("hello"), std::ptrdiff_t{5}));
    // The count itself may wrap.
    EXPECT_EQ(RingWith("abc", 9, 7), std::pair(Bytes{0, 0, 'a', 'b', 'c', 0, 0, 3, 0}, std::ptrdiff_t{5}));
    // A record ending exactly at the end of the ring lands on the start.
    const auto [exact, landing] = RingWith("xy", 9, 3);
    EXPECT_EQ(landing, 0);
    EXPECT_EQ(RecordAt(exact, 3), std::pair(FromText("xy"), std::ptrdiff_t{0}));
}

TEST(AutoBuffer, RingReadsRejectBadRingsAndCounts) {
    std::array<unsigned char, 8> ring{6, 0, 0, 0, 'a', 'b', 'c', 'd'};
    const unsigned char* const start = ring.data();
    const struct {
        const unsigned char *cursor, *ringStart, *ringEnd;
    } kBad[] = {
        {start, start, start + 8},      // 4 + 6 bytes do not fit a ring of 8
        {start, start, start + 3},      // no room for the count
        {start + 8, start, start + 8},  // cursor outside the ring
        {start, start + 4, start + 8},
    };
    for (const auto& bad : kBad) {
        AutoBuffer target = FromText("keep");
        const unsigned char* cursor = bad.cursor;
        const Thrown thrown =
            ThrownBy<DeserializationError>([&] { target.circularDeserialize(cursor, bad.ringStart, bad.ringEnd); });
        EXPECT_STREQ(thrown.file, "zo/kel/AutoBuffer");
        EXPECT_EQ(cursor, bad.cursor);
        EXPECT_EQ(target, FromText("keep"));
    }
    EXPECT_THROW(AutoBuffer::GetCircularDeserializationSize(start, start, start + 2), DeserializationError);

    unsigned char* write = ring.data();
    EXPECT_THROW(FromText("abcde").circularSerialize(write, ring.data(), ring.data() + 8), BufferOverflow);
    EXPECT_THROW(FromText("").circularSerializeLength(write, ring.data(), ring.data() + 3), BufferOverflow);
    unsigned char* outside = ring.data() + 8;
    EXPECT_THROW(FromText("a").circularSerialize(outside, ring.data(), ring.data() + 8), BufferOverflow);
    EXPECT_EQ(write, ring.data());
    EXPECT_EQ(outside, ring.data() + 8);
}

// The count alone goes into the ring (wrapping like a record), so it needs
// room for four bytes only; an empty buffer's record is that count.
TEST(AutoBuffer, RingLengthAndEmptyRecord) {
    Bytes ring(6);
    unsigned char* cursor = ring.data() + 4;
    FromText("abcdefghij").circularSerializeLength(cursor, ring.data(), ring.data() + 6);
    EXPECT_EQ(ring, (Bytes{0, 0, 0, 0, 10, 0}));
    EXPECT_EQ(cursor, ring.data() + 2);
    EXPECT_EQ(RingWith("", 5, 3), std::pair(Bytes{0, 0, 0, 0, 0}, std::ptrdiff_t{2}));
    EXPECT_EQ(RecordAt(Bytes{0, 0, 0, 0, 0}, 3), std::pair(AutoBuffer(), std::ptrdiff_t{2}));
}

TEST(AutoBuffer, SharedCopiesAcrossThreadsCountExactly) {
    const AutoBuffer source = FromText("shared bytes");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
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
