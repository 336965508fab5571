// The metadata of a kernel: keys, separators, values.

#include <algorithm>
#include <string>

#include "pbhost/diagnostics/wiring.h"
#include "pbhost/lint/kernel_lint.h"
#include "pbhost/lint/value_check.h"
#include "pixelbender/metadata_keys.h"
#include "support/numbers.h"

namespace pbhost {

namespace {

bool isTruth(const KernelToken& token) {
    return token.text == "true" || token.text == "false";
}

// A value as the kernel reader takes it: its numbers, true and false count, all else is ignored.
struct ReadValue {
    explicit ReadValue(const KernelTokens& tokens) {
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            const KernelToken& token = tokens[i];
            hasQuote = hasQuote || isQuoted(token);
            if (token.kind == ShaderReader::Number || isTruth(token)) {
                ++count;
                hasFraction = hasFraction || token.text.find('.') != std::string_view::npos;
                isZero = isZero && leadingFloat(token.text) == 0 && token.text != "true";
                hasExponent = hasExponent || isExponent(tokens, i + 1);
            } else if (token.kind == ShaderReader::Identifier && !isQuoted(token) && count == 0) {
                constructor = token.text;
            }
        }
    }

    // "e" behind a number without a blank, which the scanner takes for a name.
    static bool isExponent(const KernelTokens& tokens, std::size_t at) {
        return at < tokens.size() && (tokens[at].text[0] == 'e' || tokens[at].text[0] == 'E') &&
               tokens[at].offset == tokens[at - 1].offset + tokens[at - 1].text.size();
    }

    int count = 0;
    bool hasQuote = false;
    bool hasFraction = false;
    bool hasExponent = false;
    bool isZero = true;           // as all of them then are, given or not
    std::string_view constructor; // the name in front of the numbers
};

// Repeats a component: "float3(0.5, 0.5, 0.5)".
std::string repeated(std::string_view type, std::string_view number, int count) {
    std::string text(type);
    for (int i = 0; i < count; ++i)
        text.append(i == 0 ? "(" : ", ").append(number);
    return text + ")";
}

class MetadataLint {
public:
    MetadataLint(const KernelOutline& outline, const pbKernelInfo& kernel, bool hasControls,
                 Findings& findings)
        : outline_(outline), kernel_(kernel), hasControls_(hasControls), findings_(findings) {}

    void run() {
        for (const MetadataBlock& block : outline_.blocks) {
            lintSyntax(block);
            for (const MetadataEntry& entry : block.entries)
                lintKey(entry, unknownProgramKey(entry.key.text));
        }
        lintParameters();
    }

private:
    void lintSyntax(const MetadataBlock& block) {
        if (!block.isClosed)
            findings_.warn("metadata-syntax", block.open, "this block of metadata has no '>'");
        for (std::size_t i = 0; i < block.entries.size(); ++i) {
            const MetadataEntry& entry = block.entries[i];
            if (entry.wrongSeparator)
                findings_.warn("metadata-syntax", *entry.wrongSeparator,
                               "the separator behind " + inQuotes(entry.key.text) + " must be ':'");
            if (!entry.isClosed)
                lintMissingEnd(entry,
                               i + 1 < block.entries.size() ? &block.entries[i + 1].key : nullptr);
        }
    }

    void lintMissingEnd(const MetadataEntry& entry, const KernelToken* next) {
        const KernelToken& last = entry.value.empty() ? entry.key : entry.value.back();
        findings_.warn("metadata-syntax", last,
                       "a ';' is missing behind the value of " + inQuotes(entry.key.text) +
                           (next == nullptr
                                ? "; the text up to the next ';' is taken for a part of it"
                                : "; " + inQuotes(next->text) + " may not be read"));
    }

    void lintKey(const MetadataEntry& entry, const std::string& unknown) {
        if (!unknown.empty())
            findings_.warn("unknown-key", entry.key, unknown);
    }

    void lintParameters() {
        std::size_t index = 0;
        for (const Declaration& declaration : outline_.declarations) {
            if (declaration.keyword.text != "parameter")
                continue;
            for (const Declarator& declarator : declaration.declarators) {
                const pbParameter* parameter =
                    index < kernel_.parameters.size() ? &kernel_.parameters[index] : nullptr;
                const bool isSame = parameter != nullptr &&
                                    std::string_view(parameter->wholeName) == declarator.name.text;
                lintParameter(declaration, declarator, isSame ? parameter : nullptr);
                ++index;
            }
        }
        if (hasControls_ && index == kernel_.parameters.size())
            lintPools();
    }

    void lintParameter(const Declaration& declaration, const Declarator& declarator,
                       const pbParameter* parameter) {
        const MetadataBlock* block = declarator.metadata ? &*declarator.metadata : nullptr;
        if (block != nullptr) {
            lintSyntax(*block);
            for (const MetadataEntry& entry : block->entries) {
                lintKey(entry, unknownParameterKey(entry.key.text));
                lintValue(entry, elementTypeFromName(declaration.type.text));
                lintWord(entry);
            }
        }
        if (parameter == nullptr || !hasControls_)
            return;
        for (const ParameterFault& fault : faultsOf(*parameter)) {
            const MetadataEntry* entry = block == nullptr ? nullptr : block->entry(fault.key);
            const bool isType = std::string_view(fault.rule) == "parameter-type";
            findings_.warn(fault.rule,
                           isType             ? declaration.type
                           : entry == nullptr ? declarator.name
                                              : entry->key,
                           fault.message);
        }
    }

    void lintValue(const MetadataEntry& entry, pbElementType type) {
        const bool isPoint = entry.key.text == pointDefaultKey;
        if (valueField(entry.key.text) == nullptr && !isPoint)
            return;
        if (isPoint)
            type = pbTypeFloat2;
        const int wanted = componentCount(type);
        const std::string name = elementTypeName(type);
        const ReadValue value(entry.value);
        if (wanted == 0 || entry.value.empty())
            return;
        const auto warn = [&](const char* rule, const std::string& message) {
            const KernelToken &first = entry.value.front(), &last = entry.value.back();
            findings_.warn(rule, first.offset, last.offset + last.text.size() - first.offset,
                           message);
        };
        if (value.hasQuote)
            warn("value-kind", "a text in quotes is not a value of type " + name);
        else if (value.hasExponent)
            warn("value-kind", "an exponent is not read: 1e-3 is 1 and 3; write 0.001");
        else if (value.count != 0 && componentBase(type) == pbScalarInt && value.hasFraction)
            warn("value-kind", "the value has a fraction, which is cut for type " + name);
        else if (value.count != wanted && !(value.isZero && value.count == 1))
            warn("value-count", countMessage(entry, value, name, wanted));
        else if (isOtherType(value.constructor, name))
            warn("value-kind", "the value is of type " + std::string(value.constructor) +
                                   ", and the parameter of type " + name);
    }

    static bool isOtherType(std::string_view constructor, const std::string& name) {
        return elementTypeFromName(constructor) != pbTypeNone && constructor != name;
    }

    static std::string countMessage(const MetadataEntry& entry, const ReadValue& value,
                                    const std::string& name, int wanted) {
        const std::string given = value.count == 0   ? "no number"
                                  : value.count == 1 ? "1 number"
                                                     : std::to_string(value.count) + " numbers";
        std::string message =
            "the value has " + given + ", and " + name + " takes " + std::to_string(wanted);
        if (value.count > wanted)
            return message + "; the others are ignored";
        message += "; what is missing is 0";
        const auto number = std::find_if(entry.value.begin(), entry.value.end(), [](auto& token) {
            return token.kind == ShaderReader::Number || isTruth(token);
        });
        if (value.count == 1 && wanted <= 4)
            message += "; for the same in all write " + repeated(name, number->text, wanted);
        return message;
    }

    // The words of aeUIControl and parameterType.
    void lintWord(const MetadataEntry& entry) {
        const bool isHint = entry.key.text == "aeUIControl";
        const auto word = quotedText(outline_, entry);
        if (!word || word->empty() || (!isHint && entry.key.text != "parameterType"))
            return;
        if (isHint ? uiControlFromName(*word) != pbControlNone
                   : parameterTypeFromName(*word) != pbParameterNone)
            return;
        std::vector<std::string_view> known;
        if (isHint)
            known.assign(pbUIControlNames.begin() + 1, pbUIControlNames.end());
        else
            known.assign(pbParameterTypeNames.begin() + 1, pbParameterTypeNames.end() - 1);
        findings_.warn("unknown-word", entry.value.front().offset + 1, word->size(),
                       std::string(entry.key.text) + " has no value " + inQuotes(*word) + "; " +
                           namesLike(*word, std::move(known)));
    }

    void lintPools() {
        std::vector<const KernelToken*> names;
        for (const Declaration& declaration : outline_.declarations)
            if (declaration.keyword.text == "parameter")
                for (const Declarator& declarator : declaration.declarators)
                    names.push_back(&declarator.name);
        for (const std::size_t index : parametersWithoutControl(kernel_.parameters))
            findings_.warn("too-many-parameters", *names[index],
                           "there is no control left for " + inQuotes(names[index]->text) +
                               ", the effect has " + controlsFor(kernel_.parameters[index]) +
                               "; it keeps its default");
    }

    const KernelOutline& outline_;
    const pbKernelInfo& kernel_;
    const bool hasControls_;
    Findings& findings_;
};

} // namespace

void lintMetadata(const KernelOutline& outline, const pbKernelInfo& kernel, bool hasControls,
                  Findings& findings) {
    MetadataLint(outline, kernel, hasControls, findings).run();
}

} // namespace pbhost
