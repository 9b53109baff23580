// Short texts read from the byte form share one payload per thread; what a
// reader sees must not change.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tavlo/qkstatic/vardata.h"

namespace {

VarData ReadBack(const VarData& value) {
    zo::kel::AutoBuffer buffer;
    value.SerializeWithSize(buffer);
    const unsigned char* cursor = buffer.Data();
    return VarData::DeserializeWithSize(cursor, buffer.Len());
}

const char* TextOf(const VarData& value) { return value.getIAnsi()->GetData(); }

TEST(RecentTexts, RepeatedShortTextsShareOnePayload) {
    const VarData first = ReadBack(VarData("Pressure"));
    const VarData second = ReadBack(VarData("Pressure"));
    EXPECT_EQ(first.getIAnsi(), second.getIAnsi());
    EXPECT_NE(ReadBack(VarData("pressure")).getIAnsi(), first.getIAnsi());  // same key, other bytes

    // Same length, same first and last eight bytes (so the same slot): the
    // middle still tells them apart. Likewise for the shortest texts.
    const VarData middle = ReadBack(VarData("abcdefgh1234ijklmnop"));
    EXPECT_STREQ(TextOf(ReadBack(VarData("abcdefgh5678ijklmnop"))), "abcdefgh5678ijklmnop");
    EXPECT_STREQ(TextOf(ReadBack(VarData("abcdefgh1234ijklmnop"))), "abcdefgh1234ijklmnop");
    for (const char* text : {"a", "ab", "abc", "abcd", "abcde"}) {
        EXPECT_STREQ(TextOf(ReadBack(VarData(text))), text);
        EXPECT_EQ(ReadBack(VarData(text)).getIAnsi(), ReadBack(VarData(text)).getIAnsi());
    }

    const std::string longText(33, 'x');
    EXPECT_NE(ReadBack(VarData(longText.c_str())).getIAnsi(), ReadBack(VarData(longText.c_str())).getIAnsi());
    EXPECT_EQ(ReadBack(VarData("")).GetLength(), 0u);
}

// Thousands of texts crowd every slot; each value keeps its own bytes.
TEST(RecentTexts, EvictedTextsStayWithTheirValues) {
    std::vector<VarData> values;
    std::vector<std::string> texts;
    for (int i = 0; i < 5000; ++i) {
        texts.push_back("tag" + std::to_string(i % 1700) + std::string(static_cast<std::size_t>(i % 9), '.'));
        values.push_back(ReadBack(VarData(texts.back().c_str())));
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(values[i].GetLength(), texts[i].size());
        ASSERT_EQ(std::string(TextOf(values[i]), values[i].GetLength()), texts[i]);
    }
}

// A shared payload may outlive the thread that read it, and be dropped on another.
TEST(RecentTexts, ValuesOutliveTheReadingThread) {
    std::vector<VarData> values;
    std::thread([&] {
        for (int i = 0; i < 100; ++i) values.push_back(ReadBack(VarData("Running")));
    }).join();
    std::vector<std::thread> droppers;
    for (int t = 0; t < 4; ++t) {
        droppers.emplace_back([part = std::vector<VarData>(values.begin() + t * 25, values.begin() + t * 25 + 25)] {
            for (const VarData& value : part) EXPECT_STREQ(TextOf(value), "Running");
        });
    }
    values.clear();
    for (std::thread& dropper : droppers) dropper.join();
}

}  // namespace
