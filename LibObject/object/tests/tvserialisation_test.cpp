// The serial form of whole objects, checked byte for byte on the test
// classes (tvtestitem.h lists their tags and defaults).

#include "LibObject/object/tvobject.h"

#include "LibObject/object/tests/tvtestitem.h"
#include "TestSupport/tvobjecttest.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>

namespace {

class SerialisationTest : public TVObjectTest
{
protected:
    // The round-trip property: reading what was written and writing it
    // again gives the same bytes.
    static void expect_stable(const std::string& written)
    {
        EXPECT_EQ(rewrite(written), written);
    }
};

// The first fenced block after heading in the document of the form.
std::string documented_block(const std::string& heading)
{
    std::ifstream in(TV_SERIAL_FORM_DOC);
    const std::string doc((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const size_t section = doc.find(heading);
    const size_t open = doc.find("```\n", section);
    const size_t close = doc.find("```\n", open + 4);
    if (section == std::string::npos || open == std::string::npos || close == std::string::npos)
        return std::string();
    return doc.substr(open + 4, close - open - 4);
}

// Sets G_PurgeUnhandled for one scope.
class PurgeScope
{
public:
    PurgeScope() { TVObject::set_purge_unhandled(true); }
    ~PurgeScope() { TVObject::set_purge_unhandled(false); }
};

TEST_F(SerialisationTest, ObjectAtItsDefaultsWritesOnlyItsBraces)
{
    EXPECT_EQ(write(TVTestItem()), "{TVTestItem\n}\n");
    EXPECT_EQ(write(TVTestBase()), "{TVTestBase\n}\n");
    // Members without a default are always there.
    EXPECT_EQ(write(TVTestNote()), "{TVTestNote\n!w!0\n!x!\n}\n");
}

TEST_F(SerialisationTest, LinesFollowTheSerialiseBodyAndAMissingLineReadsAsTheDefault)
{
    TVTestItem item;
    item.m_flag = true;
    item.m_letter = 'x';
    item.m_count = -3;
    item.m_total = 1234567890123L;
    item.m_ratio = 3.14159;
    item.m_scale = 2.5;
    item.m_ref = TVId(7, 2, -1);
    item.m_when = TVDate(2026, 10, 37815, 0, 0); // 11 January, 10:30:15 GMT
    item.m_span = TVDuration(1, 3600, 0);
    item.m_valueText = "v";
    item.m_text = "hello";
    item.m_numbers = {4, 5};
    item.m_refs = {TVId(1, -1, -1)};
    item.m_spans.add(new TVDuration(0, 60, 5));
    item.m_words.add(new std::string("w1"));
    item.m_words.add(new std::string("w2"));
    item.m_phrases = {"p q"};
    ASSERT_TRUE(item.m_settings.add("a", new std::string("1")));
    ASSERT_TRUE(item.m_labels.add("k", new std::string("v")));
    auto* kid = new TVTestBase;
    kid->m_key = 9;
    item.m_kids.add(kid);
    item.m_notes.add(new TVTestNote);
    item.m_lines.add(new std::string("raw"));
    item.m_key = 4;
    item.m_name = "nm";

    const std::string expected =
        "{TVTestItem\n"
        "!b!1\n"
        "!c!x\n"
        "!i!-3\n"
        "!l!1234567890123\n"
        "!d!3.14\n"
        "!g!2.5\n"
        "!id!7/2/-1/\n"
        // second minute hour day month year zone, day and month from 0
        "!dt!153010100002026000000\n"
        // days, seconds, then the microsecond only when there is one
        "!du!0000000100003600@\n"
        "!sv!v\n"
        "!t!hello\n"
        "!iv!4\n"
        "!iv!5\n"
        "!idv!1/-1/-1/\n"
        "!dua!0000000000000060000005@\n"
        "!sa!w1\n"
        "!sa!w2\n"
        "!ss!p q\n"
        "!m!a=1\n"
        "!mb!k=v\n"
        "@kid\n"
        "{TVTestBase\n"
        "!K!9\n"
        "}\n"
        "@note\n"
        "{TVTestNote\n"
        "!w!0\n"
        "!x!\n"
        "}\n"
        "raw\n"
        "!TVTestBase+K!4\n"
        "!TVTestBase+N!nm\n"
        "}\n";
    EXPECT_EQ(write(item), expected);
    expect_stable(expected);

    // Read onto the item, a text without lines puts every member back at
    // its default, so none is written.
    ASSERT_EQ(item.object_from_string("{TVTestItem\n}\n", C_Version), TVErrC_ok);
    EXPECT_EQ(write(item), "{TVTestItem\n}\n");
}

TEST_F(SerialisationTest, WorkedExampleOfTheDocumentIsWhatTheCodeWrites)
{
    TVTestItem item;
    item.m_text = "First line\nSecond line";
    item.m_count = 3;
    item.m_lines.add(new std::string("{raw"));
    item.m_notes.add(new TVTestNote);
    item.m_key = 17;
    std::unique_ptr<TVTestItem> withNewer = read<TVTestItem>(write(item) + "!zz!kept as it was\n");
    ASSERT_NE(withNewer, nullptr);
    // Appended after the class end, the unknown line is not part of it.
    EXPECT_EQ(withNewer->get_nserentries(), 0);
    withNewer = read<TVTestItem>("{TVTestItem\n!zz!kept as it was\n" + write(item).substr(12));
    ASSERT_NE(withNewer, nullptr);

    const std::string example = documented_block("## Worked example");
    ASSERT_FALSE(example.empty());
    EXPECT_EQ(write(*withNewer), example);
    expect_stable(example);
}

TEST_F(SerialisationTest, UnknownEntriesAreWrittenBackBehindTheKnownOnes)
{
    const std::string text = "{TVTestItem\n"
                             "!zz!from a newer program\n"
                             "!TVTestBase+K!2\n"
                             "!i!1\n"
                             "!TVTestBase+Q!x\n"
                             "}\n";
    const std::string expected = "{TVTestItem\n"
                                 "!i!1\n"
                                 "!TVTestBase+K!2\n"
                                 "!zz!from a newer program\n"
                                 "!TVTestBase+Q!x\n"
                                 "}\n";
    EXPECT_EQ(rewrite(text), expected);
    expect_stable(expected);
}

TEST_F(SerialisationTest, PurgeLeavesUnknownEntriesOutButKeepsThemInMemory)
{
    std::unique_ptr<TVTestItem> item = read<TVTestItem>("{TVTestItem\n!i!1\n!zz!2\n}\n");
    ASSERT_NE(item, nullptr);
    {
        PurgeScope purge;
        EXPECT_EQ(write(*item), "{TVTestItem\n!i!1\n}\n");
    }
    EXPECT_EQ(item->get_nserentries(), 1);
    EXPECT_EQ(write(*item), "{TVTestItem\n!i!1\n!zz!2\n}\n");
}

TEST_F(SerialisationTest, TextWithReservedBytesSurvivesBothTextPaths)
{
    TVTestItem item;
    const std::string stored = std::string("a!b\\c\nd\re", 9) + std::string(1, '\0') + "f";
    item.m_text = stored;      // escaped once, with the line
    item.m_valueText = stored; // escaped once more by the value binder
    const std::string written = write(item);
    EXPECT_EQ(written, "{TVTestItem\n"
                       "!sv!a!b\\\\\\\\c\\\\ndef\n"
                       "!t!a!b\\\\c\\ndef\n"
                       "}\n");
    std::unique_ptr<TVTestItem> back = read<TVTestItem>(written);
    ASSERT_NE(back, nullptr);
    // Carriage return and NUL can't be stored; all else comes back.
    EXPECT_EQ(back->m_text, "a!b\\c\ndef");
    EXPECT_EQ(back->m_valueText, "a!b\\c\ndef");
    expect_stable(written);
}

TEST_F(SerialisationTest, RawLinesWithEachReservedFirstCharacterComeBack)
{
    TVTestItem item;
    for (const char* line : {"@a", "\\b", "{c", "!d", "}e", "", "plain", "end\\"})
        item.m_lines.add(new std::string(line));
    const std::string written = write(item);
    EXPECT_EQ(written, "{TVTestItem\n"
                       "\\@a\n"
                       "\\\\\\b\n"
                       "\\{c\n"
                       "\\!d\n"
                       "\\}e\n"
                       "\n"
                       "plain\n"
                       "end\\\\\n"
                       "}\n");
    std::unique_ptr<TVTestItem> back = read<TVTestItem>(written);
    ASSERT_NE(back, nullptr);
    ASSERT_EQ(back->m_lines.size(), 8);
    EXPECT_EQ(*back->m_lines[1], "\\b");
    EXPECT_EQ(*back->m_lines[7], "end\\");
    expect_stable(written);
}

TEST_F(SerialisationTest, NestedObjectsKeepTheirClassesAndOrder)
{
    const std::string text = "{TVTestItem\n"
                             "@kid\n"
                             "{TVTestBase\n"
                             "!K!1\n"
                             "}\n"
                             "@kid\n"
                             "{TVTestItem\n"
                             "!i!2\n"
                             "@kid\n"
                             "{TVTestBase\n"
                             "!N!deep\n"
                             "}\n"
                             "@note\n"
                             "{TVTestNote\n"
                             "!w!3\n"
                             "!x!inner\n"
                             "}\n"
                             "}\n"
                             "}\n";
    std::unique_ptr<TVTestItem> item = read<TVTestItem>(text);
    ASSERT_NE(item, nullptr);
    ASSERT_EQ(item->m_kids.size(), 2);
    EXPECT_EQ(item->m_kids[0]->get_class_name(), "TVTestBase");
    auto* middle = dynamic_cast<TVTestItem*>(item->m_kids[1]);
    ASSERT_NE(middle, nullptr);
    EXPECT_EQ(middle->m_count, 2);
    ASSERT_EQ(middle->m_kids.size(), 1);
    EXPECT_EQ(middle->m_kids[0]->m_name, "deep");
    ASSERT_EQ(middle->m_notes.size(), 1);
    EXPECT_EQ(middle->m_notes[0]->m_text, "inner");
    EXPECT_EQ(write(*item), text);
}

TEST_F(SerialisationTest, NestedObjectOfTheWrongClassFailsTheRead)
{
    std::istringstream in("{TVTestItem\n@note\n{TVTestBase\n}\n}\n");
    TVObject* out = nullptr;
    EXPECT_TRUE(istvwarn(TVObject::read_class(in, out, C_Version)));
    EXPECT_EQ(out, nullptr);
    const TVRaised r = take_pending();
    EXPECT_EQ(r.code, TVErrC_DynamicCast);
    EXPECT_EQ(r.text, "Object read failed.");
}

TEST_F(SerialisationTest, SuffixMatchFindsAMemberAfterItsBaseIsRenamed)
{
    // "K" matches by suffix, "i" doesn't: OldBase+i stays an unknown entry.
    const std::string old = "{TVTestItem\n!OldBase+K!5\n!OldBase+i!6\n}\n";
    std::unique_ptr<TVTestItem> item = read<TVTestItem>(old);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->m_key, 5);
    EXPECT_EQ(item->m_count, 0);
    EXPECT_EQ(write(*item), "{TVTestItem\n!TVTestBase+K!5\n!OldBase+i!6\n}\n");
    // The full tag still comes first.
    item = read<TVTestItem>("{TVTestItem\n!Old+K!5\n!TVTestBase+K!7\n}\n");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->m_key, 7);
}

TEST_F(SerialisationTest, RepeatedLineOfASingleValuedMemberCannotTakeOverLater)
{
    // The first line of a member counts. Kept, the repeats would be written
    // back as unknown entries and, the member being at its default and so
    // not written, read as its value by the next load. Lines of the same
    // suffix under other prefixes are other programs' members: they stay,
    // and the member is written even at its default, so that it still
    // comes first at the next read.
    const std::string text = "{TVTestItem\n"
                             "!i!0\n!zz!x\n!i!5\n"
                             "!t!\n!t!b\n"
                             "@note\n{TVTestNote\n!w!1\n!x!\n}\n"
                             "!TVTestBase+K!0\n!OldBase+K!5\n!K!6\n"
                             "}\n";
    std::unique_ptr<TVTestItem> item = read<TVTestItem>(text);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->m_count, 0);
    EXPECT_EQ(item->m_text, "");
    EXPECT_EQ(item->m_key, 0);
    const std::string written = write(*item);
    EXPECT_EQ(written, "{TVTestItem\n"
                       "@note\n{TVTestNote\n!w!1\n!x!\n}\n"
                       "!TVTestBase+K!0\n"
                       "!zz!x\n!OldBase+K!5\n!K!6\n"
                       "}\n");
    item = read<TVTestItem>(written);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->m_key, 0);
    EXPECT_EQ(write(*item), written);
}

TEST_F(SerialisationTest, ManyValuedMembersKeepTheirOrderAndTheirKeyRule)
{
    const std::string text = "{TVTestItem\n"
                             "!iv!3\n!iv!1\n!iv!2\n"
                             "!m!a=1\n!m!b=2\n!m!a=3\n!m!no key\n"
                             "!mb!a=1\n!mb!a=3\n!mb!x=y=z\n"
                             "}\n";
    std::unique_ptr<TVTestItem> item = read<TVTestItem>(text);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->m_numbers, (std::vector<int>{3, 1, 2}));
    // With replace the later "a" wins and moves behind "b".
    EXPECT_EQ(write(*item), "{TVTestItem\n"
                            "!iv!3\n!iv!1\n!iv!2\n"
                            "!m!b=2\n!m!a=3\n!m!=no key\n"
                            "!mb!a=1\n!mb!x=y=z\n"
                            "}\n");
}

TEST_F(SerialisationTest, ReadingAnUnknownClassNamesIt)
{
    std::istringstream in("{TVNoSuchClass\n!a!1\n}\n");
    TVObject* out = nullptr;
    EXPECT_TRUE(istvwarn(TVObject::read_class(in, out, C_Version)));
    EXPECT_EQ(out, nullptr);
    const TVRaised r = take_pending();
    EXPECT_EQ(r.code, TVObject::TVErrC_ObjectUnknown);
    EXPECT_EQ(r.text, "Could not identify object TVNoSuchClass");
}

TEST_F(SerialisationTest, UnterminatedTaggedClassFailsButAnUnterminatedClassDoesNot)
{
    std::istringstream in("{TVTestItem\n!i!1\n@kid\n{TVTestBase\n!K!1\n");
    TVObject* out = nullptr;
    EXPECT_TRUE(istvwarn(TVObject::read_class(in, out, C_Version)));
    EXPECT_EQ(out, nullptr);
    const TVRaised r = take_pending();
    EXPECT_EQ(r.code, TVErrC_FileTooShort);
    EXPECT_EQ(r.text, "Could not find the end of the class marker.");

    std::unique_ptr<TVTestItem> item = read<TVTestItem>("{TVTestItem\n!i!1");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->m_count, 1);
}

TEST_F(SerialisationTest, StreamWithoutAClassStartIsTheEndOfTheFile)
{
    for (const char* text : {"", "\n\n\n", "{\n\r\n", "junk\n}\n"}) {
        SCOPED_TRACE(text);
        std::istringstream in(text);
        TVObject* out = nullptr;
        EXPECT_EQ(TVObject::read_class(in, out, C_Version), TVErrC_okEndOfFile);
        EXPECT_EQ(out, nullptr);
        EXPECT_FALSE(get_tverror()->is_error());
    }
}

TEST_F(SerialisationTest, StreamOfObjectsReadsOneAtATime)
{
    std::istringstream in("{TVTestNote\n!w!1\n!x!\n}\n\n{TVTestBase\n!K!2\n}\n");
    std::string names;
    for (;;) {
        TVObject* out = nullptr;
        const int result = TVObject::read_class(in, out, C_Version);
        std::unique_ptr<TVObject> owned(out);
        if (result == TVErrC_okEndOfFile)
            break;
        ASSERT_EQ(result, TVErrC_ok);
        names += owned->get_class_name() + " ";
    }
    EXPECT_EQ(names, "TVTestNote TVTestBase ");
}

TEST_F(SerialisationTest, TaggedClassThatNoMemberTakesLosesItsTagLine)
{
    // Kept from the program's past: the block is written bare, so the next
    // reader takes it for raw lines and its "}" for the end of the item.
    const std::string text = "{TVTestItem\n"
                             "@zz\n"
                             "{TVTestNote\n"
                             "!w!1\n"
                             "}\n"
                             "!i!2\n"
                             "}\n";
    const std::string once = rewrite(text);
    EXPECT_EQ(once, "{TVTestItem\n"
                    "!i!2\n"
                    "{TVTestNote\n"
                    "!w!1\n"
                    "}\n"
                    "}\n");
    const std::string twice = rewrite(once);
    EXPECT_EQ(twice, "{TVTestItem\n"
                     "!i!2\n"
                     "\\{TVTestNote\n"
                     "!w!1\n"
                     "}\n");
    expect_stable(twice);
}

TEST_F(SerialisationTest, ReadOntoAnObjectFillsItWhateverClassTheStreamNames)
{
    TVTestItem item;
    item.m_count = 9;
    std::istringstream in("{TVTestBase\n!i!4\n!TVTestBase+K!1\n}\n");
    ASSERT_EQ(item.read_class(in, C_Version), TVErrC_ok);
    EXPECT_EQ(item.m_count, 4);
    EXPECT_EQ(item.m_key, 1);

    std::istringstream both("{TVTestBase\n}\n");
    TVObject* out = nullptr;
    const TVRaised r = tv_catch_raise([&] { (void)TVObject::read_class(both, &out, &item, C_Version); });
    EXPECT_EQ(r.code, TVErrC_NullPointer);
    EXPECT_EQ(r.text, "Both inClass and outClass were supplied.");
}

} // namespace
