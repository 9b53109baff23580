#include "zo/kel/Exception.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "zo/kel/KelTestSupport.h"
#include "zo/kel/StringBase.h"

namespace {

using namespace zo::kel::exception;

struct Expected {
    std::unique_ptr<Exception> exception;
    const char* text;
    std::uint32_t code;
};

TEST(Exception, EveryClassHasItsTextAndCode) {
    std::vector<Expected> rows;
    rows.push_back({std::make_unique<OutOfRange>(1, "f"), "Out of range", 0x8ABC7007});
    rows.push_back({std::make_unique<OutOfRange2>("String offset out of range", 1, "f"),
                    "Out of range: String offset out of range", 0x8ABC7007});
    rows.push_back({std::make_unique<BoundExceeded2>("Resulting string too large", 1, "f"),
                    "A request was made that would exceed the bounds: Resulting string too large", 0x8ABC7007});
    rows.push_back({std::make_unique<BufferOverflow>(1, "f"), "Buffer overflowed", 0x8ABC7017});
    rows.push_back({std::make_unique<BufferUnderflow>(1, "f"), "Buffer underflowed", 0x8ABC701A});
    rows.push_back({std::make_unique<DeserializationError>(1, "f"), "Failed to deserialize", 0x8ABC7014});
    rows.push_back({std::make_unique<UnableToConvert>(1, "f"), "Unable to convert.", 0x8ABC7034});
    rows.push_back({std::make_unique<NotFound>(1, "f"), "Not found", 0x8ABC700A});
    rows.push_back({std::make_unique<InvalidSequence>(1, "f"), "Invalid UTF8 encoding sequence", 0x8ABC7030});
    rows.push_back({std::make_unique<InvalidLocale>(1, "f"), "Invalid locale", 0x8ABC7024});
    rows.push_back({std::make_unique<InvalidArgument>(1, "f"), "Invalid argument(s)", 0x8ABC700F});
    rows.push_back({std::make_unique<InvalidArgument2>("xx_YY", 1, "f"), "Invalid argument(s): xx_YY", 0x8ABC700F});
    rows.push_back({std::make_unique<SyntaxError>(1, "f"), "SyntaxError", 0x8ABC7004});
    for (const auto& row : rows) {
        EXPECT_STREQ(row.exception->what(), row.text);
        EXPECT_EQ(static_cast<std::uint32_t>(row.exception->getErrorCode()), row.code) << row.text;
    }
    // Index and size faults deliberately share one code.
    EXPECT_EQ(BoundExceeded(0, nullptr).getErrorCode(), OutOfRange(0, nullptr).getErrorCode());
}

TEST(Exception, MessageCarriersAreCaughtAsTheirBase) {
    const kel_test::Thrown caught =
        kel_test::ThrownBy<OutOfRange>([] { throw OutOfRange2("String offset out of range", 7, "zo/kel/StringBase"); });
    EXPECT_EQ(caught.what, "Out of range: String offset out of range");
    EXPECT_EQ(caught.line, 7u);
    EXPECT_STREQ(caught.file, "zo/kel/StringBase");
    EXPECT_THROW(throw InvalidArgument2("x", 0, nullptr), InvalidArgument);
    EXPECT_THROW(throw BoundExceeded2("x", 0, nullptr), BoundExceeded);
    EXPECT_THROW(throw NotFound(0, nullptr), std::exception);
}

TEST(Exception, CopiesKeepSiteAndOwnTheirMessage) {
    std::unique_ptr<InvalidArgument2> original = std::make_unique<InvalidArgument2>("de_XX", 42, "zo/kel/x");
    const InvalidArgument2 copy = *original;
    original.reset();
    EXPECT_STREQ(copy.what(), "Invalid argument(s): de_XX");
    EXPECT_EQ(copy.getLine(), 42u);
    EXPECT_STREQ(copy.getFile(), "zo/kel/x");

    const OutOfRange plain(0, nullptr);
    EXPECT_EQ(plain.getLine(), 0u);
    EXPECT_EQ(plain.getFile(), nullptr);
}

TEST(Exception, SyntaxErrorInitialize) {
    SyntaxError error(3, "f");
    const auto textAfter = [&error](const auto& text) { return error.initialize(text), std::string(error.what()); };
    EXPECT_EQ(textAfter(""), "SyntaxError");
    EXPECT_EQ(textAfter("unexpected ')'"), "SyntaxError: unexpected ')'");
    EXPECT_EQ(textAfter(zo::kel::WideString(L"bad token")), "SyntaxError: bad token");
    EXPECT_EQ(textAfter(zo::kel::WideString()), "SyntaxError");
    EXPECT_THROW(error.initialize(zo::kel::WideString(L"\u00E9")), UnableToConvert);
}

TEST(Exception, ThrowSiteIsStampedWithProjectRelativePath) {
    using zo::kel::internal::TrimmedSourcePath;
    static_assert(TrimmedSourcePath("/home/a/qk/src/zo/kel/StringBase.cpp") == "zo/kel/StringBase");
    static_assert(TrimmedSourcePath("/usr/include/qkdynam/zo/kel/SafeInteger.h") == "zo/kel/SafeInteger");
    static_assert(TrimmedSourcePath("/x/src/y/include/qkdynam/tavlo/qkstatic/vardata.h") == "tavlo/qkstatic/vardata");
    static_assert(TrimmedSourcePath("/qkdynam/src/tavlo/qkstatic/vardata.cpp") == "tavlo/qkstatic/vardata");

    unsigned int expectedLine = 0;
    try {
        expectedLine = __LINE__ + 1;
        ZO_THROW(OutOfRange2, "reason");
    } catch (const OutOfRange2& caught) {
        EXPECT_EQ(caught.getLine(), expectedLine);
        EXPECT_STREQ(caught.what(), "Out of range: reason");
        EXPECT_STREQ(caught.getFile(), "zo/kel/ExceptionTest");
    }
}

}  // namespace
