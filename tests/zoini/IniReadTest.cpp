#include <chrono>
#include <cstdio>
#include <utility>

#include "zoini/IniTestSupport.h"

namespace {

using namespace ini_test;

TEST(IniRead, ItemLinesAndSeparators) {
    Document doc = ParseText("[S]\nKey = Value\nOther=Value\nColon:Value\nBoth:=x\n");
    ExpectRawValues(doc.get(), "S", {{"Key", "Value"}, {"Other", "Value"}, {"Both:", "x"}});
    EXPECT_FALSE(IniItemExists(doc.get(), "S", "Colon"));
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), 4);

    doc = ParseText("[S]\nColon:Value\nBoth:=x\nEq=a:b\n", kIniReadColonSeparatorAndImplicitSection);
    ExpectRawValues(doc.get(), "S", {{"Colon", "Value"}, {"Both", "x"}, {"Eq", "a:b"}});
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), -1);

    // A separator at the very end gives an empty value; one at the start, no name.
    doc = ParseText("[S]\nEnd:\n = nameless\n", kIniReadColonSeparatorAndImplicitSection | kIniReadAllowEmptyValues);
    EXPECT_EQ(IniNumberOfItems(doc.get(), "S"), 1);
    EXPECT_TRUE(IniItemExists(doc.get(), "S", "End"));
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), 3);
}

TEST(IniRead, SectionHeaders) {
    Document doc = ParseText("[ Sect ] trailing\na=1\n[]\n[open\n[\t]\n; comment\n  ;indented comment\n");
    ASSERT_EQ(IniNumberOfSections(doc.get()), 1);
    EXPECT_EQ(NthName(doc.get(), 1), "Sect");
    EXPECT_EQ(NthName(doc.get(), 2), "<none>");
    EXPECT_EQ(IniLineOfSection(doc.get(), "sect"), 1);
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), 3);
}

TEST(IniRead, EmptyValuesAndBlankLines) {
    Document doc = ParseText("[S]\n\nkey=\nkey2 =   \n");
    EXPECT_FALSE(IniItemExists(doc.get(), "S", "key"));
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), 2);  // the blank line counts

    doc = ParseText("[S]\nkey=\nkey2 =   \n", kIniReadAllowEmptyValues);
    EXPECT_EQ(IniNumberOfItems(doc.get(), "S"), 2);
    const char* value = nullptr;
    EXPECT_EQ(IniNthItemPointerToString(doc.get(), "S", 2, &value), 1);
    EXPECT_STREQ(value, "");
}

TEST(IniRead, QuotesAreStrippedPerOption) {
    const std::string text = "[S]\nd=\"a b\"\none=\"\ns='x y'\nmixed=\"x'\n";
    // The writer shows which quote each item kept.
    const std::string written = "[S]\nd = \"a b\"\none = \"\ns = 'x y'\nmixed = \"x'\n\n";
    Document doc = ParseText(text);
    ExpectRawValues(doc.get(), "S", {{"d", "a b"}, {"one", "\""}, {"s", "'x y'"}});
    EXPECT_EQ(WriteText(doc.get()), written);

    doc = ParseText(text, kIniReadStripSingleQuotes);
    ExpectRawValues(doc.get(), "S", {{"d", "\"a b\""}, {"s", "x y"}});
    EXPECT_EQ(WriteText(doc.get()), written);
}

TEST(IniRead, DuplicateSectionsAndItems) {
    const std::string text = "[A]\nx=1\n[B]\n[a]\nX=2\ny=3\n";
    Document doc = ParseText(text);
    EXPECT_EQ(IniNumberOfSections(doc.get()), 2);
    EXPECT_EQ(IniLineOfSection(doc.get(), "A"), 4);
    EXPECT_EQ(IniNumberOfItems(doc.get(), "A"), 2);
    EXPECT_EQ(RawValue(doc.get(), "A", "x"), "2");
    EXPECT_EQ(IniLineOfItem(doc.get(), "A", "x"), 5);

    doc = NewDocument();
    EXPECT_EQ(IniSetDuplicateChecking(doc.get(), 0), 1);
    ASSERT_EQ(ReadText(doc.get(), text + "[A]\nx=4\nx=5\n"), 0);
    EXPECT_EQ(IniNumberOfSections(doc.get()), 4);
    EXPECT_EQ(IniLineOfSection(doc.get(), "A"), 1);  // the first of the name
    EXPECT_EQ(RawValue(doc.get(), "A", "x"), "1");
    EXPECT_EQ(NthName(doc.get(), 4), "A");
    EXPECT_EQ(IniRemoveSection(doc.get(), "A"), 1);
    EXPECT_EQ(RawValue(doc.get(), "A", "X"), "2");  // the next of the name takes over
}

TEST(IniRead, NameComparisonIgnoresCaseAndSurroundingBlanks) {
    Document doc = ParseText("[Section One]\nMy Key=v\n");
    EXPECT_TRUE(IniItemExists(doc.get(), "  section one\t", " MY KEY  "));
    EXPECT_FALSE(IniItemExists(doc.get(), "section  one", "my key"));
    EXPECT_EQ(IniSetCaseAndWhitespaceSensitiveChecking(doc.get(), 1), 0);
    EXPECT_FALSE(IniItemExists(doc.get(), "section one", "my key"));
    EXPECT_TRUE(IniItemExists(doc.get(), "Section One", "My Key"));
}

TEST(IniRead, ItemsBeforeTheFirstSection) {
    Document doc = ParseText("a=1\n[S]\nb=2\n");
    EXPECT_EQ(IniNumberOfSections(doc.get()), 1);
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), -1);

    doc = ParseText("a=1\nb:2\n[S]\nc=3\n", kIniReadColonSeparatorAndImplicitSection);
    ASSERT_EQ(IniNumberOfSections(doc.get()), 2);
    ExpectRawValues(doc.get(), "(null)", {{"a", "1"}, {"b", "2"}});
    EXPECT_EQ(IniLineOfSection(doc.get(), "(null)"), -1);
    EXPECT_EQ(WriteText(doc.get()), "a = 1\nb = 2\n\n[S]\nc = 3\n\n");
}

TEST(IniRead, ContinuationItemsAreJoined) {
    Document doc = ParseText(
        "[S]\nText Line0001=ab\nText Line0002=cd\nText Line0003=\"ef\"\nafter=1\n"
        "Lone Line0002=x\nOne Line1=y\nBig Line99999999999=z\n");
    // The last one overflows: not a continuation.
    ExpectRawValues(doc.get(), "S", {{"Text", "abcdef"}, {"Lone Line0002", "x"}, {"One", "y"}, {"Big Line99999999999", "z"}});
    EXPECT_EQ(IniLineOfItem(doc.get(), "S", "Text"), 2);
    EXPECT_EQ(IniNumberOfItems(doc.get(), "S"), 5);
    EXPECT_EQ(NthName(doc.get(), "S", 2), "after");

    // Only " Line" and digits end a piece's name: these stay as they are.
    doc = ParseText("[S]\n123=a\nx-=b\nChannel12=c\nTextLine0001=d\n");
    ExpectRawValues(doc.get(), "S", {{"123", "a"}, {"x-", "b"}, {"Channel12", "c"}, {"TextLine0001", "d"}});
    // A new first piece starts a new run; a repeated first piece replaces the earlier one.
    doc = ParseText("[S]\nA Line0001=a\nA Line0002=b\nB Line0001=c\nB Line0001=C\nB Line0002=d\n");
    ExpectRawValues(doc.get(), "S", {{"A", "ab"}, {"B", "Cd"}});
    EXPECT_EQ(IniNumberOfItems(doc.get(), "S"), 2);
}

TEST(IniRead, ByteOrderMarks) {
    EXPECT_EQ(RawValue(ParseText("\xEF\xBB\xBF[S]\na=1\n").get(), "S", "a"), "1");
    for (const std::string& mark : {std::string("\xFF\xFE"), std::string("\xFE\xFF"), std::string("\xFF\xFE\0\0", 4), std::string("\0\0\xFE\xFF", 4)}) {
        EXPECT_EQ(ReadText(NewDocument().get(), mark + "[S]\na=1\n"), kIniErrUnsupportedEncoding);
    }
    // Bytes that only begin like a mark are text: a first line of their own here.
    for (const std::string& start :
         {std::string("\xFF\xFF"), std::string("\xFF"), std::string("\xFE\xFE"), std::string("\xFE"),
          std::string("\xEF\xBB\xBE"), std::string("\xEF\xBC"), std::string("\xEF"), std::string("\0\0\xFE\0", 4),
          std::string("\0\0\0", 3), std::string("\0\x01", 2), std::string("\0", 1)}) {
        Document doc = NewDocument();
        EXPECT_EQ(ReadText(doc.get(), start + "\n[S]\na=1\n"), 0);
        EXPECT_EQ(RawValue(doc.get(), "S", "a"), "1");
    }
    EXPECT_EQ(ReadText(NewDocument().get(), "x"), 0);  // too short for any mark
}

TEST(IniRead, LineBreaksAndLineNumbers) {
    static constexpr char kText[] = "[S]\r\na=1\n\rb=2\rc=3\r\rd=4\n\ne=5\0f=6\r\n\ng=7";
    Document doc = ParseText(std::string(kText, sizeof kText - 1));
    ExpectItemLines(doc.get(), "S", {{"a", 2}, {"b", 3}, {"c", 4}, {"d", 6}, {"e", 8}, {"f", 9}, {"g", 11}});
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), 5);
}

// Delivers at most three bytes per call, whatever the room.
struct TrickleSource {
    std::string text;
    size_t offset = 0;
    int line = 1;
};

int Trickle(void* context, char* buffer, int room, int* lineComplete, int* endOfInput, int* lineNumber) {
    auto* source = static_cast<TrickleSource*>(context);
    *lineComplete = 0;
    *endOfInput = source->offset == source->text.size();
    int stored = 0;
    if (!*endOfInput) *lineNumber = source->line;
    while (!*lineComplete && stored < 3 && stored < room - 1 && source->offset < source->text.size()) {
        const char c = source->text[source->offset++];
        if (c != '\n') buffer[stored++] = c;
        else *lineComplete = 1;
    }
    source->line += *lineComplete;
    buffer[stored] = '\0';
    return stored;
}

TEST(IniRead, LineSourcesMayDeliverPieces) {
    TrickleSource source{"[Section]\nlong name = some longer value\n"};
    Document doc = NewDocument();
    ASSERT_EQ(IniRead(doc.get(), Trickle, &source), 0);
    EXPECT_EQ(RawValue(doc.get(), "Section", "long name"), "some longer value");
    EXPECT_EQ(IniLineOfItem(doc.get(), "Section", "long name"), 2);
}

// A line source that fails in one of the ways a source can, after a first line.
struct FaultySource {
    enum Fault { Error, Overfull, Stalled } fault;
    bool first = true;
};

int Faulty(void* context, char* buffer, int room, int* lineComplete, int* endOfInput, int* lineNumber) {
    auto* source = static_cast<FaultySource*>(context);
    *lineComplete = *endOfInput = 0;
    *lineNumber = 1;
    if (std::exchange(source->first, false)) {
        std::snprintf(buffer, static_cast<size_t>(room), "[S]");
        *lineComplete = 1;
        return 3;
    }
    switch (source->fault) {
        case FaultySource::Error: return kIniErrReadFailed;
        case FaultySource::Overfull: return room;  // claims more than it may store
        case FaultySource::Stalled: return 0;      // neither a line nor the end
    }
    return 0;
}

TEST(IniRead, FaultyLineSourcesFailTheRead) {
    for (const auto& [fault, expected] : {std::pair{FaultySource::Error, int{kIniErrReadFailed}},
                                          {FaultySource::Overfull, int{kIniErrInvalidArgument}},
                                          {FaultySource::Stalled, int{kIniErrReadFailed}}}) {
        FaultySource source{fault};
        Document doc = NewDocument();
        EXPECT_EQ(IniRead(doc.get(), Faulty, &source), expected) << fault;
    }
}

TEST(IniRead, NullArgumentsAreRefused) {
    Document doc = NewDocument();
    FaultySource source{FaultySource::Error};
    EXPECT_EQ(IniRead(nullptr, Faulty, &source), kIniErrInvalidArgument);
    EXPECT_EQ(IniRead(doc.get(), nullptr, nullptr), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromMemory(nullptr, "[S]", 3), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromMemory(doc.get(), nullptr, 3), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFile(nullptr, "tavlo.ini"), kIniErrInvalidArgument);
    EXPECT_EQ(IniReadFromFilePtr(nullptr, stdin), kIniErrInvalidArgument);
    // No bytes at all is an empty document.
    ASSERT_EQ(ReadText(doc.get(), "[S]\n"), 0);
    EXPECT_EQ(IniReadFromMemory(doc.get(), nullptr, 0), 0);
    EXPECT_EQ(IniNumberOfSections(doc.get()), 0);
}

TEST(IniRead, ReadingReplacesTheDocument) {
    Document doc = ParseText("[Old]\na=1\n\n");
    ASSERT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), 3);
    ASSERT_EQ(ReadText(doc.get(), "[New]\nb=2\n"), 0);
    EXPECT_FALSE(IniSectionExists(doc.get(), "Old"));
    EXPECT_EQ(IniLineOfFirstUnrecognizedLine(doc.get()), -1);
}

TEST(IniRead, VeryLongLinesAndManySections) {
    std::string value(3 << 20, 'v');
    value[12345] = 'x';
    std::string text = "[Big]\nkey = " + value + "\n";
    char line[64];
    for (int i = 0; i < 100000; ++i) text.append(line, static_cast<size_t>(std::snprintf(line, sizeof line, "[S%d]\nk%d=%d\n", i, i, i)));
    const auto start = std::chrono::steady_clock::now();
    Document doc = ParseText(text);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(RawValue(doc.get(), "Big", "key"), value);
    ASSERT_EQ(IniNumberOfSections(doc.get()), 100001);
    EXPECT_EQ(RawValue(doc.get(), "s99999", "K99999"), "99999");
    EXPECT_EQ(IniLineOfSection(doc.get(), "S50000"), 2 + 2 * 50000 + 1);
    EXPECT_EQ(NthName(doc.get(), 70002), "S70000");
}

TEST(IniRead, LargeSectionsStayFindableWhileEdited) {
    const auto name = [](std::string prefix, int number) { return prefix += std::to_string(number); };
    Document doc = NewDocument();
    IniSetDuplicateChecking(doc.get(), 0);
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(IniPutInt(doc.get(), "S", name("k", i % 1000).c_str(), i), 1);
    // Removing the first of a name uncovers the next of that name.
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(IniRemoveItem(doc.get(), "S", name("K", i).c_str()), 1);
    EXPECT_EQ(IniNumberOfItems(doc.get(), "S"), 1000);
    int value = 0;
    ASSERT_EQ(IniGetInt(doc.get(), "S", "k999", &value), 1);
    EXPECT_EQ(value, 1999);
    EXPECT_EQ(IniRemoveItem(doc.get(), "S", "k5"), 1);
    EXPECT_EQ(IniItemExists(doc.get(), "S", "k5"), 0);
    EXPECT_EQ(IniItemExists(doc.get(), "S", "k6"), 1);
    // Renaming a section keeps lookups right.
    for (int i = 0; i < 20; ++i) IniPutInt(doc.get(), name("T", i).c_str(), "x", i);
    EXPECT_EQ(IniRenameSection(doc.get(), "T3", "Renamed"), 1);
    EXPECT_FALSE(IniSectionExists(doc.get(), "T3"));
    ASSERT_EQ(IniGetInt(doc.get(), "renamed", "x", &value), 1);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(IniRenameSection(doc.get(), "missing", "x"), 0);
    EXPECT_EQ(IniRenameSection(doc.get(), "T4", ""), kIniErrEmptyName);
}

}  // namespace
