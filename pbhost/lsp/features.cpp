#include "pbhost/lsp/features.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>

#include "command/command_scope.h"
#include "hostkit/host.h"
#include "pbhost/diagnostics/xml_outline.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/lint/kernel_outline.h"
#include "pbhost/lsp/language_words.h"

namespace pbhost {

namespace {

// Numbers of the protocol.
enum CompletionKind {
    FunctionItem = 3,
    VariableItem = 6,
    PropertyItem = 10,
    EnumItem = 20,
    KeywordItem = 14,
    TypeItem = 25
};
enum SymbolKind {
    ClassSymbol = 5,
    PropertySymbol = 7,
    FunctionSymbol = 12,
    VariableSymbol = 13,
    ObjectSymbol = 19
};

// A kernel of the document with the way back to the document's offsets.
struct KernelText {
    std::string_view text;
    const SourceMap* map; // null: the text is the document

    std::size_t inDocument(std::size_t offset) const {
        return map == nullptr ? offset : map->sourceOf(offset).value_or(0);
    }
    // The text's offset for one of the document; nothing if it is elsewhere.
    std::optional<std::size_t> inText(std::size_t offset) const {
        if (map == nullptr)
            return offset;
        for (const SourceMap::Stretch& each : map->stretches())
            if (offset >= each.source && offset <= each.source + each.length)
                return each.at + (offset - each.source);
        return std::nullopt;
    }
};

// Reads a document; keeps a command running, which tokens need.
class ReadDocument {
public:
    explicit ReadDocument(const LspDocument& document)
        : source(document.text), isGraph(isGraphFile(document.file)),
          xml(isGraph ? std::string_view(document.text) : std::string_view()),
          command_(0, 0, host_.inData()) {
        if (!isGraph)
            kernels.push_back({source.text, nullptr});
        if (const XmlElement* graph = xml.root("graph"))
            for (const XmlElement* element : xml.children(*graph, "kernel"))
                if (element->hasText)
                    kernels.push_back({element->text, &element->textMap});
    }

    // The kernel that contains an offset; null: none does.
    const KernelText* kernelAt(std::size_t offset) const {
        for (const KernelText& each : kernels)
            if (each.inText(offset))
                return &each;
        return nullptr;
    }

    const SourceText source;
    const bool isGraph;
    const XmlOutline xml;
    std::vector<KernelText> kernels;

private:
    hostkit::Host host_;
    const CommandScope command_;
};

Json rangeOf(const SourceText& source, std::size_t begin, std::size_t end) {
    return {{"start", lspPosition(source, begin)}, {"end", lspPosition(source, end)}};
}

std::string codeBlock(std::string_view code) {
    return "```\n" + std::string(code) + "\n```\n";
}

std::string valueText(const KernelOutline& outline, const MetadataEntry& entry) {
    if (entry.value.empty())
        return "";
    const KernelToken &first = entry.value.front(), &last = entry.value.back();
    return std::string(
        outline.source.substr(first.offset, last.offset + last.text.size() - first.offset));
}

// A declared name with its metadata, as Markdown; empty for a name that is not declared.
std::string describeName(const KernelOutline& outline, std::string_view name) {
    for (const Declaration& declaration : outline.declarations)
        for (const Declarator& declarator : declaration.declarators) {
            if (declarator.name.text != name)
                continue;
            std::string text =
                codeBlock(std::string(declaration.keyword.text) + " " +
                          std::string(declaration.type.text) + " " + std::string(name));
            if (declarator.metadata)
                for (const MetadataEntry& entry : declarator.metadata->entries)
                    text += "- " + std::string(entry.key.text) + ": `" + valueText(outline, entry) +
                            "`\n";
            return text;
        }
    for (const FunctionOutline& function : outline.functions)
        if (function.name.text == name)
            return codeBlock(std::string(function.type.text) + " " + std::string(name) + "(...)");
    return "";
}

std::string describeWord(std::string_view name) {
    for (const auto list : {builtInFunctions, languageTypes, languageKeywords, parameterKeys,
                            programKeys, uiHints, parameterTypes})
        if (const LanguageWord* word = findWordIn(list(), name))
            return codeBlock(word->signature) + std::string(word->text);
    return "";
}

void addWords(Json& items, std::span<const LanguageWord> words, CompletionKind kind) {
    for (const LanguageWord& word : words)
        items.push_back({{"label", word.name},
                         {"kind", static_cast<int>(kind)},
                         {"detail", word.signature},
                         {"documentation", word.text}});
}

void addNames(Json& items, const KernelOutline& outline) {
    for (const Declaration& declaration : outline.declarations)
        for (const Declarator& declarator : declaration.declarators)
            items.push_back({{"label", declarator.name.text},
                             {"kind", static_cast<int>(VariableItem)},
                             {"detail", std::string(declaration.keyword.text) + " " +
                                            std::string(declaration.type.text)}});
    for (const FunctionOutline& function : outline.functions)
        items.push_back({{"label", function.name.text},
                         {"kind", static_cast<int>(FunctionItem)},
                         {"detail", std::string(function.type.text) + " " +
                                        std::string(function.name.text) + "(...)"}});
}

// The items for a place inside of a block of metadata; false if it is not in one.
bool addMetadata(Json& items, const KernelOutline& outline, std::size_t offset) {
    bool isInBlock = false;
    forEachBlock(outline, [&](const MetadataBlock& block, const Declarator* declarator) {
        if (offset <= block.open.offset || offset >= block.end)
            return;
        isInBlock = true;
        const MetadataEntry* entry = nullptr; // the last one that begins in front of the place
        for (const MetadataEntry& each : block.entries)
            if (each.key.offset + each.key.text.size() < offset)
                entry = &each;
        const bool isInValue =
            entry != nullptr && entry->hasColon &&
            outline.source.substr(entry->key.offset, offset - entry->key.offset).find(';') ==
                std::string_view::npos;
        if (!isInValue)
            addWords(items, declarator == nullptr ? programKeys() : parameterKeys(), PropertyItem);
        else if (entry->key.text == "aeUIControl")
            addWords(items, uiHints(), EnumItem);
        else if (entry->key.text == "parameterType")
            addWords(items, parameterTypes(), EnumItem);
        else
            addWords(items, languageTypes(), TypeItem);
    });
    return isInBlock;
}

// A symbol whose whole range is its name.
Json symbol(const ReadDocument& document, const KernelText& kernel, const KernelToken& name,
            SymbolKind kind, const std::string& detail) {
    const std::size_t begin = kernel.inDocument(name.offset);
    const Json range = rangeOf(document.source, begin, begin + name.text.size());
    return {{"name", name.text},
            {"detail", detail},
            {"kind", static_cast<int>(kind)},
            {"range", range},
            {"selectionRange", range}};
}

Json kernelSymbol(const ReadDocument& document, const KernelText& kernel) {
    const KernelOutline outline(kernel.text);
    Json children = Json::array();
    for (const Declaration& declaration : outline.declarations)
        for (const Declarator& declarator : declaration.declarators)
            children.push_back(symbol(
                document, kernel, declarator.name,
                declaration.keyword.text == "parameter" ? PropertySymbol : VariableSymbol,
                std::string(declaration.keyword.text) + " " + std::string(declaration.type.text)));
    for (const FunctionOutline& function : outline.functions)
        children.push_back(symbol(document, kernel, function.name, FunctionSymbol,
                                  std::string(function.type.text)));
    const std::size_t begin = kernel.inDocument(0);
    const std::size_t end =
        kernel.text.empty() ? begin : kernel.inDocument(kernel.text.size() - 1) + 1;
    const Json whole = rangeOf(document.source, begin, end);
    Json selected = rangeOf(document.source, begin, begin);
    std::string name = "kernel";
    if (!outline.kernelNames.empty()) {
        const KernelToken& token = outline.kernelNames.back();
        name = token.text;
        const std::size_t at = kernel.inDocument(token.offset);
        selected = rangeOf(document.source, at, at + token.text.size());
    }
    return {{"name", name},   {"detail", "kernel"},         {"kind", static_cast<int>(ClassSymbol)},
            {"range", whole}, {"selectionRange", selected}, {"children", children}};
}

void addNodeSymbols(const ReadDocument& document, Json& symbols) {
    const XmlElement* graph = document.xml.root("graph");
    if (graph == nullptr)
        return;
    for (const XmlElement* node : document.xml.children(*graph, "node")) {
        const XmlAttribute* id = node->attribute("id");
        if (id == nullptr || id->value.empty())
            continue;
        const XmlAttribute* kernel = node->attribute("name");
        const Json range = rangeOf(document.source, id->valueAt, id->valueAt + id->valueLength);
        symbols.push_back(
            {{"name", id->value},
             {"detail", "node of kernel " + (kernel == nullptr ? std::string("?") : kernel->value)},
             {"kind", static_cast<int>(ObjectSymbol)},
             {"range", range},
             {"selectionRange", range}});
    }
}

// The marked part of a finding; the whole line if it has no column.
Json rangeOfFinding(const SourceText& source, const Diagnostic& found) {
    const std::size_t line = std::max<std::size_t>(found.place.line, 1);
    const std::size_t start = source.offsetOfLine(line);
    const std::string_view text = source.line(line);
    if (found.place.column == 0)
        return rangeOf(source, start + std::min(text.find_first_not_of(" \t"), text.size()),
                       start + text.size());
    const std::size_t begin = start + std::min(found.place.column - 1, text.size());
    return rangeOf(source, begin, begin + std::max<std::size_t>(found.length, 1));
}

} // namespace

Json lspPosition(const SourceText& source, std::size_t offset) {
    const Place place = source.placeOf(offset);
    const std::string_view line = source.line(place.line);
    return {{"line", place.line - 1},
            {"character", utf16Length(line, std::min(place.column - 1, line.size()))}};
}

std::size_t offsetOfPosition(const SourceText& source, const Json& position) {
    const std::size_t line = wholeNumber<std::size_t>(position.at("line")) + 1;
    const auto wanted = wholeNumber<std::size_t>(position.at("character"));
    const std::string_view text = source.line(line);
    std::size_t bytes = 0;
    while (bytes < text.size() && utf16Length(text, bytes) < wanted)
        ++bytes;
    while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80U)
        ++bytes; // not inside a character
    return source.offsetOfLine(line) + bytes;
}

Json lspHover(const LspDocument& document, std::size_t offset) {
    const ReadDocument read(document);
    const KernelText* kernel = read.kernelAt(offset);
    const std::string_view word = wordAt(read.source.text, offset);
    if (kernel == nullptr || word.empty())
        return nullptr;
    std::string text = describeName(KernelOutline(kernel->text), word);
    if (text.empty())
        text = describeWord(word);
    if (text.empty())
        return nullptr;
    const auto begin = static_cast<std::size_t>(word.data() - read.source.text.data());
    return {{"contents", {{"kind", "markdown"}, {"value", text}}},
            {"range", rangeOf(read.source, begin, begin + word.size())}};
}

Json lspCompletion(const LspDocument& document, std::size_t offset) {
    const ReadDocument read(document);
    Json items = Json::array();
    const KernelText* kernel = read.kernelAt(offset);
    if (kernel != nullptr) {
        const KernelOutline outline(kernel->text);
        if (!addMetadata(items, outline, *kernel->inText(offset))) {
            addWords(items, builtInFunctions(), FunctionItem);
            addWords(items, languageTypes(), TypeItem);
            addWords(items, languageKeywords(), KeywordItem);
            addNames(items, outline);
        }
    }
    return {{"isIncomplete", false}, {"items", items}};
}

Json lspSymbols(const LspDocument& document) {
    const ReadDocument read(document);
    Json symbols = Json::array();
    for (const KernelText& kernel : read.kernels)
        symbols.push_back(kernelSymbol(read, kernel));
    addNodeSymbols(read, symbols);
    return symbols;
}

Json lspDiagnostics(const LspDocument& document, const Diagnostics& found) {
    const SourceText source(document.text);
    Json list = Json::array();
    for (const Diagnostic& each : found) {
        std::string message = each.message;
        for (const std::string& note : each.notes)
            message += "\n" + note;
        list.push_back({{"range", rangeOfFinding(source, each)},
                        {"severity", each.severity == Severity::Error ? 1 : 2},
                        {"code", each.rule},
                        {"source", "pbhost"},
                        {"message", message}});
    }
    return list;
}

} // namespace pbhost
