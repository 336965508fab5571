// The guard in front of the XML parser, measured against what the parser itself does.
#include <algorithm>
#include <memory>
#include <random>
#include <string>

#include <tinyxml.h>

#include "pixelbender/graph_reader.h"
#include "pixelbender/xml_guard.h"
#include "tests/support/running_command.h"

namespace {

// Elements below one another that the parser has gone into.
int nesting(const TiXmlNode& node) {
    int deepest = 0;
    for (const TiXmlNode* child = node.FirstChild(); child != nullptr; child = child->NextSibling())
        deepest = std::max(deepest, nesting(*child));
    return deepest + (node.ToElement() != nullptr && !node.NoChildren() ? 1 : 0);
}

int attributes(const TiXmlNode& node) {
    int most = 0;
    if (const TiXmlElement* element = node.ToElement(); element != nullptr)
        for (auto* each = element->FirstAttribute(); each != nullptr; each = each->Next())
            ++most;
    for (const TiXmlNode* child = node.FirstChild(); child != nullptr; child = child->NextSibling())
        most = std::max(most, attributes(*child));
    return most;
}

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

// The guard must see each element and attribute that the parser sees. The nesting.
int expectSeen(const std::string& text) {
    TiXmlDocument document;
    document.SetTabSize(0);
    document.Parse((text + "\n\n\n\n").c_str(), nullptr, TIXML_ENCODING_UTF8);
    const int depth = nesting(document);
    const int most = attributes(document);
    EXPECT_FALSE(depth > 0 && isWithinXmlLimits(text, depth - 1, 256)) << text;
    EXPECT_FALSE(most > 0 && isWithinXmlLimits(text, 256, most - 1)) << text;
    return depth;
}

TEST(XmlGuard, seesAllThatTheParserSees) {
    const std::string pieces[] = {"<a>",        "</a>",
                                  "<a/>",       "<a b='",
                                  "\"",         "'",
                                  ">",          "<!--",
                                  "-->",        "<![CDATA[",
                                  "]]>",        "<?xml ",
                                  "version=",   "&#60;",
                                  "&",          "\xEF\xBB\xBF",
                                  "\xE2",       "\xF0",
                                  "\xC2",       "\xEF",
                                  "\xFF",       "/",
                                  "=",          " ",
                                  "x",          "</b>",
                                  "<b",         "?>",
                                  "<",          "<!",
                                  "&#x3c;",     ";",
                                  "&lt;",       "\n",
                                  "encoding=",  "a",
                                  " c=d e='f'", "\xEF\xBF\xBE",
                                  "<\x7F>",     "standalone='"};
    std::mt19937 random(25);
    int nested = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string text = repeated("<a>", random() % 3);
        for (auto count = random() % 14; count > 0; --count)
            text += pieces[random() % (random() % 4 == 0 ? 3 : std::size(pieces))];
        nested += expectSeen(text) > 1 ? 1 : 0;
    }
    EXPECT_GT(nested, 3000); // else this proves little
}

TEST(XmlGuard, seesElementsBehindFalseComments) {
    for (const std::string front :
         {"<?xml version='><!--'?>", "<?xml encoding='><!--'?>", "<?xml standalone='><!--'?>",
          "<a b='><!--'/>", "<a b=\xEF\xBB\xBF'><!--'/>", "<a b=\xEF\xBF\xBE'><!--'/>",
          "<a b=\xEF\xBF\xBF'><!--'/>", "<!x '><a/>"})
        EXPECT_EQ(expectSeen(front + "<c><d>x"), 2) << front;
}

TEST(XmlGuard, refusesNoDecentDocument) {
    const std::string attribute = " name='<a> &gt;' b = \">\"";
    const std::string inside =
        "<!-- <a> --><![CDATA[<a><a>]]>text \xEF\xBB\xBF\xC3\xA4<?pi <a?><b" + attribute +
        "/><b></b>";
    const std::string document = "<?xml version='1.0' encoding=\"UTF-8\"?>\n<!DOCTYPE a>" +
                                 repeated("<a" + attribute + " >" + inside, 8) +
                                 repeated("</a >", 8);
    EXPECT_TRUE(isWithinXmlLimits(document, 9, 2));
    EXPECT_FALSE(isWithinXmlLimits(document, 8, 2));
    EXPECT_FALSE(isWithinXmlLimits(document, 9, 1));
    EXPECT_TRUE(isWithinXmlLimits(repeated("<a><b></b></a>", 1000), 2, 0));
}

class HostileGraphTest : public RunningCommand {};

TEST_F(HostileGraphTest, readsGraphsUpToTheLimits) {
    const auto result = [](const std::string& contents) {
        pbGraphInfo graph;
        return readGraphText("<graph>" + contents + "</graph>", graph);
    };
    const auto nested = [](std::size_t depth) {
        return repeated("<a>", depth) + repeated("</a>", depth);
    };
    const auto wide = [](int count) {
        std::string element = "<a";
        for (int i = 0; i < count; ++i)
            element += " a" + std::to_string(i) + "='x'";
        return element + "/>";
    };
    EXPECT_EQ(result(nested(maxXmlNesting - 1)), 0);
    EXPECT_EQ(result(nested(maxXmlNesting)), 1);
    EXPECT_EQ(result(wide(maxXmlAttributes)), 0);
    EXPECT_EQ(result(wide(maxXmlAttributes + 1)), 1);
}

TEST_F(HostileGraphTest, survivesAMegabyteOfAnything) {
    struct Case {
        const char* start;
        const char* piece;
        const char* end;
    };
    const Case cases[] = {
        {"", "<graph>", ""},
        {"<graph>", "<a b='", ""},
        {"<graph ", "a='x' ", ""},
        {"<graph>", "</graph>", ""},
        {"<graph a='", "&#x1", ";"},
        {"<graph>", "&#x", ""},
        {"<graph>", "&", "&"},
        {"<graph>", "\xEF", ""},
        {"<graph>\n", "\xEF\n", "\xEF\xBB"},
        {"<graph a='", "\xF0", "\xF0"},
        {"<graph><!--", "-", "-"},
        {"<graph><![CDATA[", "]", "]]"},
        {"<?xml ", " ", ""},
        {"<?xml ", "version=", "'"},
        {"<", "\xEF\xBB\xBF", ""},
        {"<graph>", "<node/><connect/><inputImage/>", "\xE2\x80"},
        {"<graph><kernel>", "kernel ", "</kernel>"},
        {"<graph><parameter name='p' type='int'><metadata name='defaultValue' value='", "9", "'/>"},
    };
    for (const Case& each : cases) {
        std::string text = each.start;
        while (text.size() < 1000000)
            text += each.piece;
        pbGraphInfo graph;
        const int result = readGraphText(text + each.end, graph);
        EXPECT_TRUE(result == 0 || graph.languageVersion == 0) << each.start << each.piece;
    }
}

// The text lies in a block of exactly its size, so the address checker sees a read behind its end.
TEST_F(HostileGraphTest, readsADocumentCutOffAnywhere) {
    const std::string document =
        "<?xml version='1.0'?><graph name='\xC3\xA4'><!-- c --><![CDATA[x]]>"
        "<kernel>\xE2\x82\xAC &#228; \xF0\x9F\x98\x80</kernel><a b=c/></graph>";
    for (std::size_t size = 0; size <= document.size(); ++size) {
        const auto exact = std::make_unique<char[]>(size);
        std::copy_n(document.data(), size, exact.get());
        pbGraphInfo graph;
        const int result = readGraphText({exact.get(), size}, graph);
        EXPECT_EQ(result == 0, size >= document.find("<graph") + 6) << size;
    }
}

} // namespace
