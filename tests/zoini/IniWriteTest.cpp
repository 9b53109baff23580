#include "zoini/IniTestSupport.h"

namespace {

using namespace ini_test;

TEST(IniWrite, SectionsItemsAndSeparators) {
    Document doc = NewDocument();
    EXPECT_EQ(WriteText(doc.get()), "");
    IniPutString(doc.get(), "First", "name", "text");
    IniPutInt(doc.get(), "First", "count", 3);
    IniPutBoolean(doc.get(), "Second", "on", 1);
    EXPECT_EQ(WriteText(doc.get()), "[First]\nname = \"text\"\ncount = 3\n\n[Second]\non = True\n\n");
    EXPECT_EQ(IniSetWriteOptions(doc.get(), -1, 0, 0), 1);
    EXPECT_EQ(WriteText(doc.get()), "[First]\nname=\"text\"\ncount=3\n\n[Second]\non=True\n\n");
}

TEST(IniWrite, LongValuesAreSplitAndJoinedAgain) {
    const std::string value = "abcdefghijklmnopqrstuvwxyz0123456789ABCD";  // 40 characters
    Document doc = NewDocument();
    IniSetWriteOptions(doc.get(), 30, 0, kIniWriteSpacedSeparator);
    IniPut(doc.get(), "S", "Name", value.c_str(), 0);
    const std::string text = WriteText(doc.get());
    EXPECT_EQ(text,
              "[S]\nName Line0001 = abcdefghijklmn\nName Line0002 = opqrstuvwxyz01\n"
              "Name Line0003 = 23456789ABCD\n\n");
    EXPECT_EQ(RawValue(ParseText(text).get(), "S", "Name"), value);

    // Quoted pieces leave two characters for the quotes; "=" still allows for three.
    IniSetWriteOptions(doc.get(), 30, 0, 0);
    IniPut(doc.get(), "S", "Name", value.c_str(), '"');
    const std::string quoted = WriteText(doc.get());
    EXPECT_EQ(quoted,
              "[S]\nName Line0001=\"abcdefghijkl\"\nName Line0002=\"mnopqrstuvwx\"\n"
              "Name Line0003=\"yz0123456789\"\nName Line0004=\"ABCD\"\n\n");
    EXPECT_EQ(RawValue(ParseText(quoted).get(), "S", "Name"), value);

    // A line that fits exactly is not split; a name that leaves no room for a piece fails.
    IniPut(doc.get(), "S", "Name", std::string(25, 'x').c_str(), 0);
    EXPECT_EQ(WriteText(doc.get()), "[S]\nName=" + std::string(25, 'x') + "\n\n");
    IniSetWriteOptions(doc.get(), 10, 0, 0);
    std::string output;
    EXPECT_EQ(IniWrite(doc.get(), AppendLine, &output), kIniErrLineTooShort);
}

TEST(IniWrite, BreakCharacterEndsPieces) {
    Document doc = NewDocument();
    EXPECT_EQ(IniSetWriteOptions(doc.get(), 30, 128, 0), kIniErrBadInteger);
    EXPECT_EQ(IniSetWriteOptions(doc.get(), 30, ',', 0), 1);
    IniPut(doc.get(), "S", "Name", "aa,bbbb,ccccccc,dddddddddddddddd,e", 0);
    EXPECT_EQ(WriteText(doc.get()),
              "[S]\nName Line0001=aa,bbbb,\nName Line0002=ccccccc,\nName Line0003=dddddddddddddd\n"
              "Name Line0004=dd,e\n\n");
}

TEST(IniWrite, BlankLinePolicyForEditedDocuments) {
    Document doc = ParseText("k=x\n[A]\na=1\n[B]\nb=2\n", kIniReadColonSeparatorAndImplicitSection);
    IniPutInt(doc.get(), "New", "n", 1);
    IniPutInt(doc.get(), "Newer", "n", 2);
    IniPutInt(doc.get(), "(null)", "z", 3);
    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteSpacedSeparator | kIniWriteBlankLinePolicy);
    EXPECT_EQ(WriteText(doc.get()), "k = x\nz = 3\n[A]\na = 1\n[B]\nb = 2\n\n[New]\nn = 1\n\n[Newer]\nn = 2\n\n");
    IniSetWriteOptions(doc.get(), 80, 0, kIniWriteSpacedSeparator);
    EXPECT_EQ(WriteText(doc.get()),
              "k = x\nz = 3\n\n[A]\na = 1\n\n[B]\nb = 2\n\n[New]\nn = 1\n\n[Newer]\nn = 2\n\n");
}

int FailOnSecondLine(void* context, const char*, size_t) { return ++*static_cast<int*>(context) == 2 ? -77 : 0; }

TEST(IniWrite, SinkFailureStopsTheWrite) {
    Document doc = ParseText("[A]\na=1\nb=2\n");
    int calls = 0;
    EXPECT_EQ(IniWrite(doc.get(), FailOnSecondLine, &calls), -77);
    EXPECT_EQ(calls, 2);
}

}  // namespace
