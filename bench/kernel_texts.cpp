#include "bench/kernel_texts.h"

#include <string_view>

#include "pixelbender/xml_guard.h"

namespace bench {

namespace {

std::string repeated(std::string_view piece, std::size_t bytes) {
    std::string text;
    text.reserve(bytes + piece.size());
    while (text.size() < bytes)
        text += piece;
    return text;
}

std::string section(const std::string& number) {
    return "    // The share of the light that comes from lamp " + number +
           ".\n"
           "    parameter float light" +
           number +
           "\n"
           "    <   minValue : 0.0;\n"
           "        maxValue : 4.0;\n"
           "        defaultValue : 1.0;\n"
           "        aeDisplayName : \"Light " +
           number +
           "\";\n"
           "        description : \"How bright the lamp is.\";\n"
           "    >;\n\n"
           "    /* Falls off with the square of the distance, and never to nothing:\n"
           "       a lamp far away still gives a little. */\n"
           "    float4 lamp" +
           number +
           "(float4 color, float2 place)\n"
           "    {\n"
           "        float2 way = place - float2(120.5, 80.25) * pixelAspectRatio(src);\n"
           "        float fall = 1.0 / (1.0 + 0.001 * dot(way, way));\n"
           "        if (fall < 0.05 || light" +
           number +
           " <= 0.0)\n"
           "            fall = 0.05;\n"
           "        color.rgb *= 1.0 + fall * light" +
           number +
           ";\n"
           "        return clamp(color, float4(0.0), float4(1.0));\n"
           "    }\n\n";
}

std::string openGraph(std::string_view middle) {
    return std::string("<graph name=\"a\">").append(middle);
}

} // namespace

std::string realisticKernel(std::size_t bytes) {
    std::string text = "<languageVersion : 1.0;>\n\n"
                       "kernel Lamps\n"
                       "<   namespace : \"bench\";\n    vendor : \"bench\";\n    version : 1;\n"
                       "    description : \"Lights a picture.\";\n>\n{\n"
                       "    input image4 src;\n    output pixel4 dst;\n\n";
    std::string body = "    void evaluatePixel()\n    {\n"
                       "        dst = sampleNearest(src, outCoord());\n";
    for (int i = 0; text.size() + body.size() < bytes; ++i) {
        const std::string number = std::to_string(i);
        text += section(number);
        body += "        dst = lamp" + number + "(dst, outCoord());\n";
    }
    return text + body + "    }\n}\n";
}

const std::array<MalformedText, 7> malformedKernels = {{
    {"quotes", [](std::size_t bytes) { return repeated("\"", bytes); }},
    {"backslashes", [](std::size_t bytes) { return repeated("\\", bytes); }},
    {"quoted backslashes",
     [](std::size_t bytes) {
         return std::string("\"").append(repeated("\\", bytes)).append("\"");
     }},
    {"angle brackets", [](std::size_t bytes) { return repeated("<", bytes); }},
    {"open comments", [](std::size_t bytes) { return repeated("/*", bytes); }},
    {"unclosed directives", [](std::size_t bytes) { return repeated("#\\\n", bytes); }},
    {"declarators with one long text",
     [](std::size_t bytes) {
         return "parameter int a<enumValues:\"" + repeated("x", bytes / 2) + "\";>" +
                repeated(",a", bytes / 2) + ";";
     }},
}};

const std::array<MalformedText, 6> malformedGraphs = {{
    {"open tags", [](std::size_t bytes) { return repeated("<a>", bytes); }},
    {"attributes of one tag",
     [](std::size_t bytes) {
         std::string text = "<graph";
         for (int i = 0; text.size() < bytes; ++i)
             text += " a" + std::to_string(i) + "=\"\"";
         return text + "/>";
     }},
    {"tags full of attributes",
     [](std::size_t bytes) {
         std::string tag = "<a";
         for (int i = 0; i < maxXmlAttributes; ++i)
             tag += " a" + std::to_string(i) + "=\"\"";
         return openGraph(repeated(tag + "/>", bytes));
     }},
    {"entities", [](std::size_t bytes) { return openGraph(repeated("&amp;", bytes)); }},
    {"bytes 0xEF", [](std::size_t bytes) { return openGraph(repeated("\xEF", bytes)); }},
    {"elements side by side",
     [](std::size_t bytes) { return openGraph(repeated("<node/>", bytes)); }},
}};

} // namespace bench
