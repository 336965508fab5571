// The guard in front of the XML parser, compared with the parser itself.
#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <tinyxml.h>

#include "pixelbender/graph_reader.h"
#include "pixelbender/xml_guard.h"
#include "tests/support/running_command.h"

namespace {

// The depth of nested elements in the parsed document. Sets `most` to the largest number of
// attributes.
int nesting(const TiXmlNode& node, int& most) {
    const TiXmlElement* element = node.ToElement();
    int attributes = 0;
    if (element != nullptr)
        for (auto* each = element->FirstAttribute(); each != nullptr; each = each->Next())
            ++attributes;
    most = std::max(most, attributes);
    int deepest = 0;
    for (auto* child = node.FirstChild(); child != nullptr; child = child->NextSibling())
        deepest = std::max(deepest, nesting(*child, most));
    return deepest + (element != nullptr && !node.NoChildren() ? 1 : 0);
}

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

// Checks that the guard counts every element and attribute that the parser reads. Returns the
// nesting depth.
int expectSeen(const std::string& text) {
    TiXmlDocument document;
    document.SetTabSize(0);
    document.Parse((text + "\n\n\n\n").c_str(), nullptr, TIXML_ENCODING_UTF8);
    int most = 0;
    const int depth = nesting(document, most);
    EXPECT_FALSE(depth > 0 && isWithinXmlLimits(text, depth - 1, 256)) << text;
    EXPECT_FALSE(most > 0 && isWithinXmlLimits(text, 256, most - 1)) << text;
    return depth;
}

TEST(XmlGuard, countsAllThatTheParserReads) {
    std::istringstream words("<a> </a> <a/> <a|b=' \" ' > <!-- --> <![CDATA[ ]]> <?xml| version= & "
                             "\xEF\xBB\xBF \xE2 \xF0 \xC2 \xEF \xFF / = | x </b> <b ?> < <! &#x3c; "
                             "; encoding= a |c=d|e='f' \xEF\xBF\xBE <\x7F> standalone='");
    std::vector<std::string> pieces;
    for (std::string word; words >> word; pieces.push_back(word))
        std::replace(word.begin(), word.end(), '|', ' ');
    std::mt19937 random(25);
    int nested = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string text = repeated("<a>", random() % 3);
        for (auto count = random() % 14; count > 0; --count)
            text += pieces[random() % (random() % 4 == 0 ? 3 : pieces.size())];
        nested += expectSeen(text) > 1 ? 1 : 0;
    }
    EXPECT_GT(nested, 3000); // the generated texts do nest
    for (const std::string front : {"<?xml version='><!--'?>", "<a b=\xEF\xBB\xBF'><!--'/>"})
        EXPECT_EQ(expectSeen(front + "<c><d>x"), 2) << front; // elements after malformed comments
}

TEST(XmlGuard, acceptsValidDocuments) {
    const std::string document =
        "<?xml version='1.0' encoding=\"UTF-8\"?>\n<!DOCTYPE a>" +
        repeated("<a name='<a> &gt;' b = \">\" ><!-- <a> --><![CDATA[<a><a>]]>text "
                 "\xEF\xBB\xBF\xC3\xA4<?pi <a?><b name='<a>'/><b></b>",
                 8) +
        repeated("</a >", 8) + repeated("<a><b></b></a>", 1000);
    EXPECT_TRUE(isWithinXmlLimits(document, 9, 2));
    EXPECT_FALSE(isWithinXmlLimits(document, 8, 2));
    EXPECT_FALSE(isWithinXmlLimits(document, 9, 1));
}

class HostileGraphTest : public RunningCommand {};

// The parser stops at the first word that is not an attribute and keeps what it has read.
TEST_F(HostileGraphTest, readsAGraphWithPlainWordsInAnElement) {
    const std::string words = repeated("word ", 300);
    for (const std::string& piece :
         {"<y " + words + ">", "<y a='1' " + words, "<y " + words + "='1'"}) {
        pbGraphInfo graph;
        EXPECT_EQ(
            readGraphText("<graph name='g' ><connect/>" + piece + repeated("<a>", 300), graph), 0);
        EXPECT_EQ(std::string(graph.name.data()), "g") << piece;
    }
    std::string attributes;
    for (int i = 0; i < 300; ++i)
        attributes += "a" + std::to_string(i) + "='' ";
    pbGraphInfo graph;
    EXPECT_EQ(readGraphText("<graph " + attributes + "/>", graph), 1) << "those are attributes";
}

TEST_F(HostileGraphTest, survivesAMegabyteOfAnything) {
    const std::array<const char*, 3> cases[] = {
        // start, repeated piece, end
        {"", "<graph>", ""},
        {"<graph ", "a='x' ", ""},
        {"<graph a='", "&#x1", ";"},
        {"<graph>", "&", "&"},
        {"<graph>\n", "\xEF\n", "\xEF\xBB"},
        {"<graph><![CDATA[", "]", "]]"},
        {"<?xml ", "version=", "'"},
        {"<graph>", "<node/><connect/><inputImage/>", "\xE2\x80"},
        {"<graph><kernel>", "kernel ", "</kernel>"},
        {"<graph><parameter name='p' type='int'><metadata name='defaultValue' value='", "9", "'/>"},
    };
    for (const auto& [start, piece, end] : cases) {
        pbGraphInfo graph;
        const int result =
            readGraphText(start + repeated(piece, 1000000 / std::strlen(piece)) + end, graph);
        EXPECT_TRUE(result == 0 || graph.languageVersion == 0) << start << piece;
    }
}

} // namespace
