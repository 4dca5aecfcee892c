// Edit text loading: the fields of DefineEditText by their flags, and the
// reduction of HTML text to plain lines with the five character entities.
#include <gtest/gtest.h>

#include <string>

#include "chars/BEditText.h"
#include "display/DictionaryFixture.h"
#include "fixture/SwfText.h"

namespace {

struct Loaded {
    int result;
    std::string text;  // "<null>" when the field has no text
    int textLength;
};

Loaded LoadEdit(const swf::EditText& def) {
    DictionaryFixture f({{1, swf::DefineEditText(def)}});
    BEditText edit;
    Loaded out;
    out.result = edit.LoadSWFFile(f.Tag(0), &f.dict);
    out.text = edit.text ? edit.text : "<null>";
    out.textLength = edit.textLength;
    return out;
}

Loaded LoadHtml(const std::string& html, bool htmlFlag = true) {
    swf::EditText def;
    def.flags = htmlFlag ? swf::kEditHtml : 0;
    def.text = html;
    return LoadEdit(def);
}

TEST(EditTextLoad, FieldsFollowTheirFlags) {
    swf::EditText def;
    def.bounds = swf::Rect{-40, 2000, 20, 600, 0};
    def.flags = swf::kEditPassword | swf::kEditWordWrap | swf::kEditBorder | swf::kEditMultiline;
    def.font = std::make_pair(uint16_t{9}, uint16_t{360});
    def.color = swf::Rgba{1, 2, 3, 4};
    def.maxLength = 77;
    def.layout = swf::EditLayout{2, 11, 12, 13, 14};
    def.variableName = "field";
    def.text = "Hello";
    DictionaryFixture f({{1, swf::DefineEditText(def)}});
    BEditText edit;
    ASSERT_EQ(edit.LoadSWFFile(f.Tag(0), &f.dict), 1);
    EXPECT_EQ(edit.bounds.left, -40);
    EXPECT_EQ(edit.bounds.right, 2000);
    EXPECT_EQ(edit.bounds.top, 20);
    EXPECT_EQ(edit.bounds.bottom, 600);
    EXPECT_EQ(edit.password, 1);
    EXPECT_EQ(edit.wordWrap, 1);
    EXPECT_EQ(edit.border, 1);
    EXPECT_EQ(edit.hasText, 1);
    EXPECT_EQ(edit.fontId, 9);
    EXPECT_EQ(edit.fontHeight, 360);
    EXPECT_EQ(edit.textColor.red, 1);
    EXPECT_EQ(edit.textColor.alpha, 4);
    EXPECT_EQ(edit.maxLength, 77);
    EXPECT_EQ(edit.align, 2);
    EXPECT_EQ(edit.leftMargin, 11);
    EXPECT_EQ(edit.rightMargin, 12);
    EXPECT_EQ(edit.indent, 13);
    EXPECT_EQ(edit.leading, 14);
    EXPECT_STREQ(edit.text, "Hello");
    EXPECT_EQ(edit.textLength, 5);
}

TEST(EditTextLoad, WithoutFlagsOnlyBoundsAndNameAreRead) {
    swf::EditText def;
    def.bounds = swf::Rect{0, 100, 0, 100, 0};
    def.variableName = "v";
    DictionaryFixture f({{1, swf::DefineEditText(def)}});
    BEditText edit;
    ASSERT_EQ(edit.LoadSWFFile(f.Tag(0), &f.dict), 1);
    EXPECT_EQ(edit.text, nullptr);
    EXPECT_EQ(edit.hasText, 0);
    EXPECT_EQ(edit.fontId, 0);
    EXPECT_EQ(edit.password + edit.wordWrap + edit.border, 0);
}

TEST(EditTextLoad, HtmlIsReducedToLinesAndEntitiesConverted) {
    struct Case {
        const char* html;
        const char* text;  // nullptr: the field ends up with no text
        int textLength;
        bool htmlFlag = true;
    } cases[] = {
        {"<p>Hi</p>", "Hi", 3},
        {"<b>x &amp; y</b>", "x & y", 10},
        {"<p>one</p><p>two</p>", "one\ntwo", 8},
        {"<p><b></b></p>", nullptr, 0},
        // Text after the last tag is never copied, on purpose.
        {"A<br>B", "A", 2},
        {"no mark-up at all", nullptr, 0},
        {"", nullptr, 0},
        {"<p>Hi", nullptr, 0},
        {"<<<>>>x<", "x", 2},
        // A tag that never closes swallows the rest.
        {"<p>kept</p><font color='#ff0000'>lost", "kept", 5},
        // Entities: each of the five, unknown ones kept, one pass only.
        {"<p>&lt;&gt;&amp;&apos;&quot;</p>", "<>&'\"", 26},
        {"<p>&foo; &amp &lt</p>", "&foo; &amp &lt", 15},
        {"<p>&amp;lt;</p>", "&lt;", 9},
        {"<p>a&</p>", "a&", 3},
        // A run is its first byte and a count: a ">" outside a tag is not
        // counted but the copy starts at the run's first byte.
        {"<p>a>b</p>", "a>", 3},
        // Bytes are bytes: invalid UTF-8 passes through untouched.
        {"<p>\xff\xfe\xc3</p>", "\xff\xfe\xc3", 4},
        // Without the HTML flag the text is kept as it is.
        {"<b>a &amp; b</b>", "<b>a &amp; b</b>", 16, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.html);
        const Loaded l = LoadHtml(c.html, c.htmlFlag);
        EXPECT_EQ(l.result, 1);
        EXPECT_EQ(l.text, c.text ? c.text : "<null>");
        EXPECT_EQ(l.textLength, c.textLength);
    }
}

TEST(EditTextLoad, DeepOrLongMarkupIsLinear) {
    struct Case {
        std::string html;
        size_t length;
    } cases[] = {
        {std::string(300000, '<'), 0},
        {std::string(150000, '<') + std::string(150000, '>'), 0},
        {"<p>" + std::string(200000, 'x') + "</p>", 200000},
    };
    std::string manyLines;
    for (int i = 0; i < 50000; ++i) manyLines += "<br>ab";
    manyLines += "<br>";
    for (const Case& c : cases) {
        const Loaded l = LoadHtml(c.html);
        EXPECT_EQ(l.result, 1);
        EXPECT_EQ(l.text == "<null>" ? 0 : l.text.size(), c.length);
    }
    const Loaded l = LoadHtml(manyLines);
    EXPECT_EQ(l.text.size(), 50000u * 3 - 1);
}

TEST(EditTextEntities, ConvertsInPlaceInOnePass) {
    struct Case {
        const char* in;
        const char* out;
    } cases[] = {
        {"", ""},
        {"&", "&"},
        {"&&amp;&", "&&&"},
        {"&quot;&quot", "\"&quot"},
        {"&amp;amp;", "&amp;"},
        {"x&apos;s", "x's"},
    };
    for (const Case& c : cases) {
        std::string buffer = c.in;
        BEditText::ConvertESC(buffer.data());
        EXPECT_STREQ(buffer.c_str(), c.out) << c.in;
    }
    BEditText::ConvertESC(nullptr);
}

TEST(EditTextEntities, CompMatchesEveryCharacterOfTheEntity) {
    EXPECT_EQ(BEditText::Comp("&lt;x", "&lt;"), 1);
    EXPECT_EQ(BEditText::Comp("&lt", "&lt;"), 0);
    EXPECT_EQ(BEditText::Comp("anything", ""), 1);
    EXPECT_EQ(BEditText::Comp("", ""), 1);
    EXPECT_EQ(BEditText::Comp("&LT;", "&lt;"), 0);
}

TEST(EditTextLoad, UnreadableBoundsOrTextFail) {
    swf::BitWriter bounds;
    bounds.UI16(1).UB(31, 5);
    // HasText is set but the tag ends before the initial text.
    swf::BitWriter text;
    text.UI16(1);
    swf::WriteRect(text, swf::Rect{0, 20, 0, 20, 0});
    text.UI16(swf::kEditHasText);
    for (const swf::BitWriter* w : {&bounds, &text}) {
        DictionaryFixture f({{1, swf::Tag(swf::kDefineEditText, w->Data())}});
        BEditText edit;
        EXPECT_EQ(edit.LoadSWFFile(f.Tag(0), &f.dict), 0);
        EXPECT_EQ(edit.text, nullptr);
    }
}

TEST(EditTextLoad, TextWithoutTerminatorLosesItsLastByte) {
    swf::EditText def;
    def.text = "abc";
    swf::Bytes body = swf::TagBody(swf::DefineEditText(def));
    body.pop_back();
    DictionaryFixture f({{1, swf::Tag(swf::kDefineEditText, body)}});
    BEditText edit;
    // The string reader may take the byte at the end of the tag; past the
    // movie it reads 0 and ends the string there.
    ASSERT_EQ(edit.LoadSWFFile(f.Tag(0), &f.dict), 1);
    EXPECT_STREQ(edit.text, "abc");
}

TEST(EditTextLoad, BuiltByTheDictionary) {
    swf::EditText def;
    def.text = "x";
    def.bounds = swf::Rect{0, 400, 0, 200, 0};
    DictionaryFixture f({{3, swf::DefineEditText(def)}});
    BChar* ch = f.dict.NewChar(3);
    ASSERT_NE(ch, nullptr);
    BEditText* edit = dynamic_cast<BEditText*>(ch);
    ASSERT_NE(edit, nullptr);
    EXPECT_STREQ(edit->text, "x");
    const _GRECT r = edit->GetBoundingBox(nullptr);
    EXPECT_EQ(r.right, 400);
    EXPECT_EQ(r.bottom, 200);
}

}  // namespace
