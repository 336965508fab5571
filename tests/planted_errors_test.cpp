// Plants an undeclared name at every name of a kernel's body in turn, and asks for its line and
// column. The driver is the real one; the files are the examples, and those of the folder in the
// environment variable TVELMARONDINE_KERNELS.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "pbhost/check/file_check.h"
#include "pbhost/diagnostics/driver_log.h"
#include "pbhost/lint/kernel_outline.h"

namespace fs = std::filesystem;
using pbhost::Diagnostic;
using pbhost::Diagnostics;
using pbhost::KernelToken;
using pbhost::SourceText;

namespace {

constexpr std::string_view planted = "qzx_planted";

// The names in the kernels' bodies, as offsets in the file.
class Names {
public:
    explicit Names(const pbhost::MappedFile& file) {
        if (!file.file.isGraph)
            addKernel(file.file.text, nullptr);
        for (std::size_t i = 0; i < file.file.graph.kernels.size(); ++i)
            addKernel(file.kernelElement(i)->text, &file.kernelElement(i)->textMap);
    }

    struct Name {
        std::size_t offset, length;
    };
    std::vector<Name> all;

private:
    void addKernel(std::string_view text, const SourceMap* map) {
        const pbhost::KernelOutline outline(text);
        for (std::size_t i = outline.bodyBegin; i < outline.bodyEnd; ++i) {
            const KernelToken& token = outline.tokens[i];
            if (token.kind != ShaderReader::Identifier || isQuoted(token) || isMetadata(outline, i))
                continue;
            const std::size_t offset = map ? map->sourceOf(token.offset).value() : token.offset;
            all.push_back({offset, token.text.size()});
        }
    }

    // Between the '<' and '>' of a parameter.
    static bool isMetadata(const pbhost::KernelOutline& outline, std::size_t index) {
        for (const pbhost::Declaration& declaration : outline.declarations)
            for (const pbhost::Declarator& each : declaration.declarators) {
                if (!each.metadata)
                    continue;
                const std::size_t end = outline.source.find('>', each.metadata->open.offset);
                const std::size_t at = outline.tokens[index].offset;
                if (at > each.metadata->open.offset && at < end)
                    return true;
            }
        return false;
    }
};

struct Counts {
    int planted = 0;      // variants of a file
    int silent = 0;       // that compile all the same, or of which only the lint tells
    int named = 0;        // whose message names the planted name
    int lines = 0;        // of these, at its line
    int columns = 0;      // of these, at its column
    int others = 0;       // messages that name another word
    int otherPlaces = 0;  // of these, at a place where that word stands
    int syntax = 0;       // other messages
    int syntaxPlaces = 0; // of these, at a token from the planted name on
};

class PlantedErrors : public testing::Test {
protected:
    void run(const fs::path& path) {
        std::ifstream stream(path, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream),
                               std::istreambuf_iterator<char>()};
        const pbhost::EffectFile file(host_, path, text);
        const pbhost::MappedFile mapped(file);
        for (const Names::Name& name : Names(mapped).all) {
            std::string variant = text;
            variant.replace(name.offset, name.length, planted);
            count(pbhost::checkFile(host_, compiler_, {path, variant}), variant, name.offset);
        }
    }

    void count(const Diagnostics& found, const std::string& text, std::size_t offset) {
        const SourceText source(text);
        const pbhost::Place place = source.placeOf(offset);
        ++counts.planted;
        bool isNamed = false, isDriver = false;
        for (const Diagnostic& each : found) {
            if (each.rule != "compile-error")
                continue;
            isDriver = true;
            const std::string_view word = pbhost::namedIn(each.message);
            if (word == planted && !isNamed) {
                isNamed = true;
                ++counts.named;
                counts.lines += each.place.line == place.line ? 1 : 0;
                const bool isColumn =
                    each.place.line == place.line && each.place.column == place.column;
                counts.columns += isColumn ? 1 : 0;
                EXPECT_TRUE(isColumn)
                    << asGccText(each) << "planted at " << place.line << ":" << place.column;
            } else if (word != planted) {
                countOther(each, source, word, place);
            }
        }
        counts.silent += isDriver ? 0 : 1;
    }

    // A word that is not declared any more stands where the message says. A message without a word
    // is at the planted name or at what follows.
    void countOther(const Diagnostic& each, const SourceText& source, std::string_view word,
                    const pbhost::Place& place) {
        const bool isGenerated = each.message.find("generated text") != std::string::npos ||
                                 each.message.find("linked") != std::string::npos;
        if (isGenerated)
            return;
        if (each.message.find("undeclared") != std::string::npos) {
            ++counts.others;
            const std::size_t at = source.offsetOfLine(each.place.line) + each.place.column - 1;
            const bool isThere = pbhost::wordAt(source.text, at) == word;
            counts.otherPlaces += isThere ? 1 : 0;
            EXPECT_TRUE(isThere) << asGccText(each);
        } else if (each.message.find("syntax error") != std::string::npos) {
            ++counts.syntax;
            const bool isBehind =
                each.place.line > place.line ||
                (each.place.line == place.line && each.place.column >= place.column);
            counts.syntaxPlaces += isBehind ? 1 : 0;
            EXPECT_TRUE(isBehind) << asGccText(each) << "planted at " << place.line << ":"
                                  << place.column;
        }
    }

    Counts counts;
    hostkit::Host host_;
    pbhost::ProgramCompiler compiler_;
};

} // namespace

TEST_F(PlantedErrors, AreFoundAtTheirLineAndColumn) {
    const char* more = std::getenv("TVELMARONDINE_KERNELS");
    for (const std::string& folder : {std::string(EXAMPLES_PATH), std::string(more ? more : "")}) {
        if (folder.empty())
            continue;
        for (const auto& entry : fs::directory_iterator(folder))
            if (entry.path().extension() == ".pbk" || entry.path().extension() == ".pbg")
                run(entry.path());
    }
    std::cout << counts.planted << " planted; " << counts.named << " named, " << counts.lines
              << " at their line, " << counts.columns << " at their column; " << counts.others
              << " other words, " << counts.otherPlaces << " in their place; " << counts.syntax
              << " syntax errors, " << counts.syntaxPlaces << " at or behind the name; "
              << counts.silent << " without a message\n";
    EXPECT_GT(counts.named, 500);
    EXPECT_EQ(counts.columns, counts.named);
}
