#include <gtest/gtest.h>

#include <string>

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/vardata.h"

namespace {

// Owns one reference to a string-operations interface.
class Text {
public:
    explicit Text(IAnsiGuts* text) : text_(text) {}
    explicit Text(const char* text) {
        IVarDataGuts* object = NewAnsiGuts(text);
        object->QueryInterface(IID_IAnsiGuts, reinterpret_cast<void**>(&text_));
        object->Release();
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { text_->Release(); }

    IAnsiGuts* operator->() const { return text_; }
    IAnsiGuts* get() const { return text_; }
    std::string str() const { return std::string(text_->GetData(), text_->GetLength()); }

private:
    IAnsiGuts* text_ = nullptr;
};

TEST(AnsiGuts, ProperCapitalisesWords) {
    struct Row {
        const char* in;
        const char* out;
    };
    for (const Row row : {Row{"hELLO wORLD", "Hello World"}, Row{"o'neil", "O'Neil"}, Row{"1abc", "1abc"},
                          Row{"", ""}, Row{"x", "X"}, Row{"  two  spaces", "  Two  Spaces"}}) {
        EXPECT_EQ(Text(Text(row.in)->Proper()).str(), row.out) << row.in;
    }
}

TEST(AnsiGuts, SubstringsClampToTheText) {
    const Text abc("abc");
    const std::pair<IAnsiGuts*, const char*> rows[] = {{abc->Left(2), "ab"},   {abc->Left(10), "abc"},
                                                       {abc->Right(1), "c"},   {abc->Right(10), "abc"},
                                                       {abc->Mid(1, 1), "b"},  {abc->Mid(1, 99), "bc"},
                                                       {abc->Mid(7, 2), ""}};
    for (const auto& [made, text] : rows) EXPECT_EQ(Text(made).str(), text);
    EXPECT_EQ(abc.str(), "abc") << "the source never changes";
}

TEST(AnsiGuts, CaseMappingConcatenationAndComparison) {
    const Text mixed("MiXeD 42");
    EXPECT_EQ(Text(mixed->ToLower()).str(), "mixed 42");
    EXPECT_EQ(Text(mixed->ToUpper()).str(), "MIXED 42");
    const Text tail(" tail");
    EXPECT_EQ(Text(mixed->Concat(tail.get())).str(), "MiXeD 42 tail");
    EXPECT_EQ(Text(mixed->Concat("!")).str(), "MiXeD 42!");
    const Text lower("mixed 42");
    EXPECT_EQ(mixed->Compare(lower.get()), 0);
    EXPECT_NE(mixed->ExactCompare(lower.get()), 0);
    EXPECT_EQ(mixed->Compare("MIXED 42"), 0);
    EXPECT_NE(mixed->ExactCompare("MIXED 42"), 0);
    EXPECT_LT(lower->Compare("mixed 43"), 0);
}

TEST(AnsiGuts, AnswersBothInterfaceTables) {
    IVarDataGuts* object = NewAnsiGutsLen("abc\0def", 7);
    IVarDataAnsi* ansi = nullptr;
    IAnsiGuts* operations = nullptr;
    ASSERT_EQ(object->QueryInterface(IID_IVarDataAnsi, reinterpret_cast<void**>(&ansi)), kStatusOk);
    ASSERT_EQ(object->QueryInterface(IID_IAnsiGuts, reinterpret_cast<void**>(&operations)), kStatusOk);
    EXPECT_EQ(ansi->GetLength(), 7u);
    EXPECT_EQ(operations->GetData(), ansi->GetData());
    // The string operations are the object's second interface table.
    EXPECT_NE(static_cast<void*>(operations), static_cast<void*>(ansi));
    void* nothing = object;
    EXPECT_EQ(object->QueryInterface(IID_IVarDataUnicode, &nothing), kNoInterface);
    EXPECT_EQ(nothing, nullptr);
    EXPECT_EQ(operations->Release(), 2);
    EXPECT_EQ(ansi->Release(), 1);
    EXPECT_EQ(object->Release(), 0);
}

TEST(AnsiGuts, UnparsableTextIsFalseAndZero) {
    IVarDataGuts* object = NewAnsiGuts("pump");
    EXPECT_FALSE(static_cast<bool>(*object));
    EXPECT_EQ(static_cast<double>(*object), 0.0);
    object->Release();
    IVarDataGuts* wide = NewUnicodeGuts(L"TRUE");
    EXPECT_TRUE(static_cast<bool>(*wide));
    EXPECT_EQ(static_cast<double>(*wide), 1.0);
    wide->Release();
}

}  // namespace
