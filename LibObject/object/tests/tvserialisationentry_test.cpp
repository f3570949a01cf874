#include "LibObject/object/tvserialisationentry.h"

#include "TestSupport/tvobjecttest.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using E = TVSerialisationEntry;

class SerialisationEntryTest : public TVObjectTest
{
protected:
    // Reads one entry from text; gives the result code.
    static int read_one(const std::string& text, E& entry)
    {
        std::istringstream in(text);
        return entry.read_entry(in);
    }

    static std::string raw_line(const std::string& value)
    {
        std::ostringstream out;
        EXPECT_EQ(E::write_raw_data(value, out), TVErrC_ok);
        return out.str();
    }
};

// The raw lines that the writer protects are read back in the tables below
// and in the serial form's own tests.
TEST_F(SerialisationEntryTest, EachLineKindIsRecognised)
{
    struct Row {
        const char* name;
        std::string line;
        E::E_ReadMode type;
        const char* tag;
        std::string value;
    };
    const Row rows[] = {
        {"field", "!t!v", E::E_TaggedField, "t", "v"},
        {"a value keeps its marks", "!t!a!b", E::E_TaggedField, "t", "a!b"},
        {"no second mark", "!t", E::E_TaggedField, "t", ""},
        {"empty tag", "!!v", E::E_TaggedField, "", "v"},
        {"field unescaped whole", "!a\\nb!x\\\\y\\n", E::E_TaggedField, "a\nb", "x\\y\n"},
        {"lone field mark", "!", E::E_RawData, "", "!"},
        {"lone class tag", "@", E::E_RawData, "", "@"},
        {"unprotected brace is raw", "{x", E::E_RawData, "", "{x"},
        {"trailing backslash stays", "end\\", E::E_RawData, "", "end\\"},
        {"carriage returns dropped", "a\rb\r", E::E_RawData, "", "ab"},
        {"NUL dropped like CR", std::string("a\0b", 3), E::E_RawData, "", "ab"},
        {"NUL in a tag", std::string("!K\0!1", 5), E::E_TaggedField, "K", "1"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        E entry;
        ASSERT_EQ(read_one(r.line + "\n", entry), TVErrC_ok);
        EXPECT_EQ(entry.get_entrytype(), r.type);
        EXPECT_EQ(entry.get_tag(), r.tag);
        EXPECT_EQ(entry.get_value(), r.value);
    }
}

TEST_F(SerialisationEntryTest, ClassEndAndStreamEndEndTheRecord)
{
    for (const char* text : {"}\n", "}anything\n", "}", ""}) {
        SCOPED_TRACE(text);
        E entry;
        EXPECT_EQ(read_one(text, entry), TVErrC_okEndOfRecord);
    }
}

TEST_F(SerialisationEntryTest, TaggedClassRunsUntilItsBracesBalance)
{
    std::istringstream in("@kid\r\nbefore\n{A\n{B\n}\n\\}x\n}\nafter\n");
    E entry;
    ASSERT_EQ(entry.read_entry(in), TVErrC_ok);
    EXPECT_EQ(entry.get_entrytype(), E::E_TaggedClass);
    EXPECT_EQ(entry.get_tag(), "kid");
    EXPECT_EQ(entry.get_value(), "before\n{A\n{B\n}\n\\}x\n}\n");
    ASSERT_EQ(entry.read_entry(in), TVErrC_ok);
    EXPECT_EQ(entry.get_value(), "after");
}

TEST_F(SerialisationEntryTest, UnterminatedTaggedClassIsTooShort)
{
    for (const char* text : {"@kid\n{A\n", "@kid\n", "@kid\n{A\n{B\n}\n"}) {
        SCOPED_TRACE(text);
        E entry;
        EXPECT_TRUE(istvwarn(read_one(text, entry)));
        const TVRaised r = take_pending();
        EXPECT_EQ(r.code, TVErrC_FileTooShort);
        EXPECT_EQ(r.text, "Could not find the end of the class marker.");
    }
}

TEST_F(SerialisationEntryTest, RawLinesWithAReservedFirstCharacterAreProtected)
{
    struct Row {
        std::string value;
        std::string line;
    };
    // "@a", "\\b", "{c", "!d", "}e" and "" are in the serial form's tests.
    const Row rows[] = {
        {"!", "\\!\n"}, {"}", "\\}\n"}, {"x\\", "x\\\\\n"}, {"a\nb", "a\\nb\n"}, {"+f", "+f\n"}, {"\n{", "\\\\n{\n"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.value);
        const std::string line = raw_line(r.value);
        EXPECT_EQ(line, r.line);
        E back;
        ASSERT_EQ(read_one(line, back), TVErrC_ok);
        EXPECT_EQ(back.get_entrytype(), E::E_RawData);
        EXPECT_EQ(back.get_value(), r.value);
        EXPECT_EQ(raw_line(back.get_value()), line);
    }
}

TEST_F(SerialisationEntryTest, TagWithAFieldMarkDoesNotComeBack)
{
    std::ostringstream out;
    ASSERT_EQ(E::write_tagged_field("a!b", "v", out), TVErrC_ok);
    E back;
    ASSERT_EQ(read_one(out.str(), back), TVErrC_ok);
    EXPECT_EQ(back.get_tag(), "a");
    EXPECT_EQ(back.get_value(), "b!v");
}

TEST_F(SerialisationEntryTest, FormattedFieldIsCutAtTheBuffer)
{
    std::ostringstream out;
    ASSERT_EQ(E::write_tagged_field("n", out, "%d-%s", 5, "x"), TVErrC_ok);
    EXPECT_EQ(out.str(), "!n!5-x\n");
    std::ostringstream longOut;
    const std::string big(2000, 'z');
    ASSERT_EQ(E::write_tagged_field("n", longOut, "%s", big.c_str()), TVErrC_ok);
    EXPECT_EQ(longOut.str(), "!n!" + std::string(1023, 'z') + "\n");
}

TEST_F(SerialisationEntryTest, EachKindIsWrittenAsItWasReadButATaggedClassLosesItsTagLine)
{
    const std::string text = "!t!a\\nb\n\\{raw\n@kid\n{A\n}\n";
    std::istringstream in(text);
    std::ostringstream out;
    for (int i = 0; i < 3; ++i) {
        E entry;
        ASSERT_EQ(entry.read_entry(in), TVErrC_ok);
        ASSERT_EQ(entry.write_entry(out), TVErrC_ok);
    }
    EXPECT_EQ(out.str(), "!t!a\\nb\n\\{raw\n{A\n}\n");
}

TEST_F(SerialisationEntryTest, WriteToAFailedStreamIsAWarning)
{
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    const E entries[] = {E(E::E_TaggedField, "t", "v"), E(E::E_RawData, "", "r"),
                         E(E::E_TaggedClass, "k", "{A\n}\n")};
    for (const E& entry : entries) {
        SCOPED_TRACE(entry.get_entrytype());
        EXPECT_TRUE(istvwarn(entry.write_entry(out)));
        const TVRaised r = take_pending();
        EXPECT_EQ(r.code, TVErrC_FileWrite);
        EXPECT_EQ(r.text, "Write operation failed.");
    }
}

} // namespace
