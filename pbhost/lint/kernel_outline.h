// The declarations of a kernel with their places: what the kernel reader takes from it, and what it
// passes over. Needs a running command; its tokens are views of the source.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "pbhost/diagnostics/kernel_tokens.h"

namespace pbhost {

using KernelTokens = std::vector<KernelToken>;

struct MetadataEntry {
    KernelToken key;
    std::optional<KernelToken> wrongSeparator; // what stands in place of the ':'
    bool hasColon = false;
    KernelTokens value;
    bool isClosed = false; // by a ';'
};

// A block between '<' and '>'.
struct MetadataBlock {
    KernelToken open;
    std::vector<MetadataEntry> entries;
    bool isClosed = false;
    std::size_t end = 0; // offset behind the block

    // The last entry with that key; null if there is none.
    const MetadataEntry* entry(std::string_view key) const;
};

struct Declarator {
    KernelToken name;
    std::optional<MetadataBlock> metadata;
};

// `parameter float a <...>, b;`, and the same for input, output and dependent.
struct Declaration {
    KernelToken keyword;
    KernelToken type;
    std::vector<Declarator> declarators;
};

struct FunctionOutline {
    KernelToken type;
    KernelToken name;
};

struct KernelOutline {
    explicit KernelOutline(std::string_view text);

    std::string_view source;
    KernelTokens tokens;
    std::vector<KernelToken> kernelNames;
    std::vector<MetadataBlock> blocks;     // in front of the body
    KernelTokens strays;                   // other names in front of the body
    std::vector<Declaration> declarations; // in the body
    std::vector<FunctionOutline> functions;
    std::size_t bodyBegin = 0, bodyEnd = 0; // indices of the body's tokens
    std::optional<KernelToken> unclosedBrace;
    std::optional<KernelToken> unclosedQuote;
    std::optional<std::size_t> unclosedComment; // offset
    std::optional<KernelToken> behindBody;      // the first token there
};

// Calls action(block, declarator) for each block of metadata; the declarator is null for those in
// front of the body.
template<class Action>
void forEachBlock(const KernelOutline& outline, Action action) {
    for (const MetadataBlock& block : outline.blocks)
        action(block, static_cast<const Declarator*>(nullptr));
    for (const Declaration& declaration : outline.declarations)
        for (const Declarator& declarator : declaration.declarators)
            if (declarator.metadata)
                action(*declarator.metadata, &declarator);
}

// The quoted text of a value, without the quotes; nothing if the value is not one.
std::optional<std::string_view> quotedText(const KernelOutline& outline,
                                           const MetadataEntry& entry);

} // namespace pbhost
