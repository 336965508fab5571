#include "pbhost/lint/kernel_lint.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <set>
#include <string>

#include "engine/program/glsl_generator.h"
#include "pbhost/diagnostics/wiring.h"
#include "pbhost/lint/reserved_words.h"
#include "support/numbers.h"

namespace pbhost {

namespace {

constexpr std::size_t fedInputs = 4; // the effect's layer and three layer controls
constexpr std::size_t nameBytes = std::tuple_size_v<pbName> - 1;
constexpr double mostRounds = 65535; // of all loops of a pixel on Mesa's software driver

class KernelLint {
public:
    KernelLint(const KernelOutline& outline, const pbKernelInfo& kernel, bool hasControls,
               Findings& findings)
        : outline_(outline), kernel_(kernel), hasControls_(hasControls), findings_(findings) {}

    void run() {
        if (!hasKernel())
            return lintMissingKernel();
        lintHead();
        lintEnd();
        lintInputs();
        lintOutput();
        lintFunctions();
        lintNames();
        lintWords();
        lintBody();
    }

private:
    bool has(std::string_view function) const {
        return kernel_.shaderText.find(function) != NarrowString::npos;
    }
    bool hasKernel() const {
        return !outline_.kernelNames.empty() || kernel_.output.type != pbTypeNone ||
               has("evaluatePixel");
    }

    std::size_t start() const {
        return outline_.kernelNames.empty()
                   ? (outline_.tokens.empty() ? 0 : outline_.tokens.front().offset)
                   : outline_.kernelNames.front().offset;
    }

    void lintMissingKernel() {
        findings_.error("no-kernel", start(),
                        "no kernel was found; expected: kernel NAME < ... > { ... }");
        lintStrays();
    }

    void lintStrays() {
        for (const KernelToken& word : outline_.strays)
            if (editDistance(word.text, "kernel") <= 2)
                findings_.warn("kernel-keyword", word,
                               inQuotes(word.text) + " is not a keyword; \"kernel\" may be meant");
    }

    void lintHead() {
        lintStrays();
        const bool hasVersion =
            std::any_of(outline_.blocks.begin(), outline_.blocks.end(), [](const auto& block) {
                return block.entry("languageVersion") != nullptr;
            });
        const KernelToken* name =
            outline_.kernelNames.empty() ? nullptr : &outline_.kernelNames.front();
        if (!hasVersion)
            findings_.warn("language-version", start(), name == nullptr ? 1 : name->text.size(),
                           "the file does not begin with <languageVersion : 1.0;>");
        if (name == nullptr)
            findings_.warn("kernel-keyword", start(), 1,
                           "the kernel has no name; expected: kernel NAME");
        else if (outline_.blocks.size() < (hasVersion ? 2U : 1U))
            findings_.warn("no-metadata", *name,
                           "kernel " + inQuotes(name->text) +
                               " has no metadata; expected behind the name: < namespace : \"...\"; "
                               "vendor : \"...\"; version : 1; >");
        for (std::size_t i = 1; i < outline_.kernelNames.size(); ++i)
            findings_.warn("second-kernel", outline_.kernelNames[i],
                           "there is more than one \"kernel\" in front of the body; the last name "
                           "is used");
    }

    void lintEnd() {
        if (outline_.unclosedComment)
            findings_.warn("unclosed-comment", *outline_.unclosedComment, 2,
                           "the comment is not closed by */");
        if (outline_.unclosedQuote)
            findings_.warn("unclosed-string", *outline_.unclosedQuote,
                           "the text has no closing quote");
        if (outline_.unclosedBrace)
            findings_.warn("unclosed-brace", *outline_.unclosedBrace,
                           "this '{' is probably the one that is not closed");
        if (!outline_.behindBody)
            return;
        const KernelToken& first = *outline_.behindBody;
        if (first.text == "kernel")
            findings_.warn("second-kernel", first, "a file has one kernel; this one is not read");
        else
            findings_.warn("text-behind-kernel", first,
                           "the text behind the kernel's last '}' is not read");
    }

    // All declarations with that keyword, one call for each name.
    template<class Action>
    void forEachDeclarator(std::string_view keyword, Action action) const {
        for (const Declaration& declaration : outline_.declarations)
            if (declaration.keyword.text == keyword)
                for (const Declarator& declarator : declaration.declarators)
                    action(declaration, declarator.name);
    }

    void lintInputs() {
        std::size_t count = 0;
        forEachDeclarator("input", [&](const Declaration&, const KernelToken& name) {
            ++count;
            if (count == maxKernelInputs + 1)
                findings_.error("too-many-inputs", name,
                                "has " + std::to_string(kernel_.inputs.size()) + " inputs, and " +
                                    std::to_string(maxKernelInputs) + " are the most");
            else if (hasControls_ && count > fedInputs && count <= maxKernelInputs)
                findings_.warn("too-many-inputs", name,
                               "the effect feeds " + std::to_string(fedInputs) + " inputs; " +
                                   inQuotes(name.text) + " reads as transparent");
        });
    }

    void lintOutput() {
        const Declaration* output = nullptr;
        for (const Declaration& declaration : outline_.declarations) {
            if (declaration.keyword.text != "output")
                continue;
            if (output != nullptr)
                findings_.warn("second-output", declaration.keyword,
                               "a kernel has one output; the last one is used");
            output = &declaration;
        }
        if (output == nullptr)
            findings_.error("output", start(),
                            "the output is missing; declare it: output pixel4 dst;");
        else if (componentCount(kernel_.output.type) != 4)
            findings_.error("output", output->type,
                            "the output must have four channels: output pixel4 NAME;");
    }

    void lintFunctions() {
        if (!has("evaluatePixel"))
            findings_.error("no-function", start(),
                            "the function is missing: void evaluatePixel() { ... }");
        if (!kernel_.dependents.empty() && !has("evaluateDependents"))
            findings_.error("no-function", start(),
                            "dependents need a function: void evaluateDependents() { ... }");
    }

    // Names are cut at 31 bytes in controls, connections and a few generated names.
    void lintNames() {
        std::map<std::string_view, std::string_view> byStart;
        for (const Declaration& declaration : outline_.declarations)
            for (const Declarator& each : declaration.declarators)
                lintName(each.name, declaration.keyword.text, byStart);
    }

    void lintName(const KernelToken& name, std::string_view keyword,
                  std::map<std::string_view, std::string_view>& byStart) {
        const std::string_view cut = name.text.substr(0, nameBytes);
        const auto [first, isNew] = byStart.emplace(cut, name.text);
        if (!isNew && first->second != name.text)
            findings_.warn("long-name", name,
                           "the first " + std::to_string(nameBytes) + " bytes are also those of " +
                               inQuotes(first->second) + ", and names are cut there");
        else if (name.text.size() > nameBytes && (keyword == "output" || keyword == "dependent"))
            findings_.warn(
                "long-name", name,
                "the name of an " +
                    std::string(keyword == "output" ? "output" : "int or bool dependent") +
                    " is cut at " + std::to_string(nameBytes) + " bytes");
    }

    // Each word once.
    void lintWords() {
        std::set<std::string_view> seen;
        for (std::size_t i = outline_.bodyBegin; i < outline_.bodyEnd; ++i) {
            const KernelToken& token = outline_.tokens[i];
            const bool isWord = token.kind == ShaderReader::Identifier && !isQuoted(token) &&
                                token.state != ShaderReader::Preprocessor;
            if (isWord && isReservedWord(token.text) && seen.insert(token.text).second)
                findings_.warn("reserved-word", token,
                               inQuotes(token.text) +
                                   " is a reserved word of GLSL; a driver may reject it");
        }
    }

    void lintBody() {
        for (std::size_t i = outline_.bodyBegin; i + 2 < outline_.bodyEnd; ++i) {
            const KernelToken& token = outline_.tokens[i];
            if (token.text == "/" && i > outline_.bodyBegin)
                lintDivision(i);
            else if (token.text == "for" || token.text == "while")
                lintLoop(i);
            else if (token.text == "const" || token.text == "define")
                takeConstant(i);
        }
    }

    static bool isWhole(const KernelToken& token) {
        return token.kind == ShaderReader::Number && !isQuoted(token) &&
               token.text.find_first_not_of("0123456789") == std::string_view::npos;
    }

    // 1/2 of two integers is 0.
    void lintDivision(std::size_t at) {
        const KernelToken &left = outline_.tokens[at - 1], &right = outline_.tokens[at + 1];
        if (!isWhole(left) || !isWhole(right))
            return;
        const std::int32_t dividend = leadingInteger(left.text);
        const std::int32_t divisor = leadingInteger(right.text);
        if (divisor == 0 || dividend % divisor == 0)
            return;
        const std::size_t length = right.offset + right.text.size() - left.offset;
        const std::string text(outline_.source.substr(left.offset, length));
        findings_.warn("integer-division", left.offset, length,
                       text + " divides integers and is " + std::to_string(dividend / divisor) +
                           "; write " + std::string(left.text) + ".0/" + std::string(right.text) +
                           ".0");
    }

    // `const int NAME = NUMBER` and `#define NAME NUMBER`.
    void takeConstant(std::size_t at) {
        const bool isMacro = outline_.tokens[at].text == "define";
        const std::size_t name = at + (isMacro ? 1 : 2), number = name + (isMacro ? 1 : 2);
        if (number < outline_.bodyEnd && outline_.tokens[number].kind == ShaderReader::Number)
            constants_[outline_.tokens[name].text] = leadingFloat(outline_.tokens[number].text);
    }

    // A bound in the parentheses behind the keyword, as a number or a constant.
    void lintLoop(std::size_t at) {
        int depth = 0;
        for (std::size_t i = at + 1; i + 1 < outline_.bodyEnd; ++i) {
            const std::string_view text = outline_.tokens[i].text;
            depth += text == "(" ? 1 : text == ")" ? -1 : 0;
            if (depth <= 0)
                return;
            if (text != "<" && text != "<=")
                continue;
            const KernelToken& bound =
                outline_.tokens[i + (outline_.tokens[i + 1].text == "=" ? 2 : 1)];
            const auto constant = constants_.find(bound.text);
            const double rounds = bound.kind == ShaderReader::Number ? leadingFloat(bound.text)
                                  : constant != constants_.end()     ? constant->second
                                                                     : 0;
            if (rounds > mostRounds)
                findings_.warn(
                    "loop-bound", bound,
                    "Mesa's software driver ends the loops of a pixel after 65535 rounds in "
                    "all, without a message");
        }
    }

    const KernelOutline& outline_;
    const pbKernelInfo& kernel_;
    const bool hasControls_;
    Findings& findings_;
    std::map<std::string_view, double> constants_;
};

} // namespace

void lintKernel(const KernelOutline& outline, const pbKernelInfo& kernel, bool hasControls,
                Findings& findings) {
    KernelLint(outline, kernel, hasControls, findings).run();
}

} // namespace pbhost
