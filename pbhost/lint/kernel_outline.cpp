#include "pbhost/lint/kernel_outline.h"

#include <algorithm>
#include <array>

namespace pbhost {

namespace {

bool isCode(const KernelToken& token) {
    return token.state == ShaderReader::Code && !isQuoted(token);
}

bool isIdentifier(const KernelToken& token) {
    return token.kind == ShaderReader::Identifier && !isQuoted(token);
}

// Blanks in front of the line that contains an offset.
std::size_t indentation(std::string_view source, std::size_t offset) {
    const std::size_t end = source.substr(0, offset).find_last_of("\r\n");
    const std::size_t start = end == std::string_view::npos ? 0 : end + 1;
    return std::min(source.find_first_not_of(" \t", start), source.size()) - start;
}

bool isFirstOfLine(std::string_view source, std::size_t offset) {
    const std::size_t before = source.substr(0, offset).find_last_not_of(" \t");
    return before == std::string_view::npos || source[before] == '\n' || source[before] == '\r';
}

class OutlineMaker {
public:
    explicit OutlineMaker(KernelOutline& outline) : made_(outline), tokens_(outline.tokens) {}

    void run() {
        readHead();
        readBody();
        if (at_ < tokens_.size())
            made_.behindBody = tokens_[at_];
        findOpenEnds();
    }

private:
    bool isAt(std::string_view text) const {
        return at_ < tokens_.size() && tokens_[at_].text == text && !isQuoted(tokens_[at_]);
    }

    // Up to the '{' of the kernel.
    void readHead() {
        while (at_ < tokens_.size()) {
            const KernelToken& token = tokens_[at_];
            if (isAt("{") && isCode(token))
                return;
            if (isAt("<")) {
                made_.blocks.push_back(readBlock());
                continue;
            }
            ++at_;
            if (token.state == ShaderReader::Preprocessor || !isIdentifier(token))
                continue;
            if (token.text != "kernel")
                made_.strays.push_back(token);
            else if (at_ < tokens_.size() && isIdentifier(tokens_[at_]))
                made_.kernelNames.push_back(tokens_[at_++]);
        }
    }

    MetadataBlock readBlock() {
        MetadataBlock block{tokens_[at_++], {}, false, 0};
        while (at_ < tokens_.size() && !block.isClosed) {
            if (isAt(">")) {
                block.isClosed = true;
                ++at_;
            } else if (isIdentifier(tokens_[at_])) {
                block.entries.push_back(readEntry());
            } else {
                ++at_;
            }
        }
        block.end = block.isClosed ? tokens_[at_ - 1].offset + 1 : made_.source.size();
        return block;
    }

    // `KEY : VALUE ;`. Ends in front of a '>', and in front of the next key if a ';' is missing.
    MetadataEntry readEntry() {
        MetadataEntry entry{tokens_[at_++], {}, false, {}, false};
        if (isAt(":")) {
            entry.hasColon = true;
            ++at_;
        } else if (at_ < tokens_.size() && !isAt(";") && !isAt(">")) {
            entry.wrongSeparator = tokens_[at_];
            if (tokens_[at_].kind == ShaderReader::Operator && !isQuoted(tokens_[at_]))
                ++at_;
        }
        for (; at_ < tokens_.size() && !isAt(">") && !beginsEntry(at_); ++at_) {
            if (isAt(";")) {
                entry.isClosed = true;
                ++at_;
                break;
            }
            entry.value.push_back(tokens_[at_]);
        }
        return entry;
    }

    bool beginsEntry(std::size_t at) const {
        return isIdentifier(tokens_[at]) && at + 1 < tokens_.size() &&
               tokens_[at + 1].text == ":" && !isQuoted(tokens_[at + 1]);
    }

    void readBody() {
        made_.bodyBegin = at_;
        int depth = 0;
        while (at_ < tokens_.size()) {
            const KernelToken& token = tokens_[at_];
            depth += isAt("{") && isCode(token) ? 1 : isAt("}") && isCode(token) ? -1 : 0;
            if (depth == 0 && isAt("}")) {
                ++at_;
                break;
            }
            if (isDeclaration(token))
                readDeclaration();
            else
                readFunction(depth);
        }
        made_.bodyEnd = at_;
    }

    static bool isDeclaration(const KernelToken& token) {
        constexpr std::array<std::string_view, 4> words = {"input", "output", "parameter",
                                                           "dependent"};
        return isIdentifier(token) && token.state != ShaderReader::Preprocessor &&
               std::find(words.begin(), words.end(), token.text) != words.end();
    }

    void readDeclaration() {
        const KernelToken keyword = tokens_[at_++];
        while (at_ < tokens_.size() && !isIdentifier(tokens_[at_]) && !isAt(";"))
            ++at_;
        if (at_ == tokens_.size() || isAt(";"))
            return;
        Declaration declaration{keyword, tokens_[at_++], {}};
        bool hasName = false;
        while (at_ < tokens_.size() && !isAt(";")) {
            if (isAt("{") || isAt("}") || isAt("("))
                break; // the declaration's ';' is missing
            if (isAt("<") && hasName) {
                declaration.declarators.back().metadata = readBlock();
                continue;
            }
            if (isAt(","))
                hasName = false;
            else if (isIdentifier(tokens_[at_]) && !hasName) {
                declaration.declarators.push_back({tokens_[at_], {}});
                hasName = true;
            }
            ++at_;
        }
        made_.declarations.push_back(std::move(declaration));
    }

    // TYPE NAME ( at the depth of the body; otherwise one token.
    void readFunction(int depth) {
        if (depth == 1 && at_ + 2 < tokens_.size() && isIdentifier(tokens_[at_]) &&
            isIdentifier(tokens_[at_ + 1]) && tokens_[at_ + 2].text == "(") {
            made_.functions.push_back({tokens_[at_], tokens_[at_ + 1]});
            at_ += 2;
        }
        ++at_;
    }

    void findOpenEnds() {
        if (!tokens_.empty() && tokens_.back().state != ShaderReader::Code &&
            tokens_.back().state != ShaderReader::Preprocessor && isQuoted(tokens_.back()))
            made_.unclosedQuote = openingQuote();
        findOpenComment();
        if (!made_.unclosedQuote && !made_.unclosedComment)
            findOpenBrace();
    }

    KernelToken openingQuote() const {
        std::size_t first = tokens_.size() - 1;
        while (first > 0 && tokens_[first - 1].state == tokens_.back().state)
            --first;
        return tokens_[first];
    }

    void findOpenComment() {
        const std::size_t opening = made_.source.rfind("/*");
        if (opening == std::string_view::npos ||
            made_.source.find("*/", opening + 2) != std::string_view::npos)
            return;
        const bool isInToken =
            std::any_of(tokens_.begin(), tokens_.end(),
                        [&](const KernelToken& token) { return token.offset >= opening; });
        const std::size_t lineStart = made_.source.substr(0, opening).find_last_of("\r\n") + 1;
        const bool isInLineComment =
            made_.source.substr(lineStart, opening - lineStart).find("//") !=
            std::string_view::npos;
        if (!isInToken && !isInLineComment)
            made_.unclosedComment = opening;
    }

    // The brace that is probably not closed: the first one whose '}' stands alone at another
    // indentation, otherwise the outermost one.
    void findOpenBrace() {
        KernelTokens open;
        std::optional<KernelToken> suspect;
        for (std::size_t i = made_.bodyBegin; i < made_.bodyEnd; ++i) {
            const KernelToken& token = tokens_[i];
            if (!isCode(token))
                continue;
            if (token.text == "{") {
                open.push_back(token);
            } else if (token.text == "}" && !open.empty()) {
                const std::size_t opening = open.back().offset;
                if (!suspect && isFirstOfLine(made_.source, token.offset) &&
                    indentation(made_.source, token.offset) != indentation(made_.source, opening))
                    suspect = open.back();
                open.pop_back();
            }
        }
        if (!open.empty())
            made_.unclosedBrace = suspect ? suspect : std::optional(open.front());
    }

    KernelOutline& made_;
    const KernelTokens& tokens_;
    std::size_t at_ = 0;
};

} // namespace

const MetadataEntry* MetadataBlock::entry(std::string_view key) const {
    const auto found = std::find_if(entries.rbegin(), entries.rend(),
                                    [&](const auto& each) { return each.key.text == key; });
    return found == entries.rend() ? nullptr : &*found;
}

KernelOutline::KernelOutline(std::string_view text) : source(text), tokens(tokensOf(text)) {
    OutlineMaker(*this).run();
}

std::optional<std::string_view> quotedText(const KernelOutline& outline,
                                           const MetadataEntry& entry) {
    if (entry.value.size() < 2 || !isQuoted(entry.value.front()))
        return std::nullopt;
    std::size_t last = 0;
    while (last + 1 < entry.value.size() && isQuoted(entry.value[last + 1]))
        ++last;
    const std::size_t begin = entry.value.front().offset + 1;
    return outline.source.substr(begin, entry.value[last].offset - begin);
}

} // namespace pbhost
