#include "pixelbender/xml_guard.h"

#include <array>
#include <cctype>

namespace {

// TinyXML stops at an error. If the guard does not detect the error, it counts elements that
// TinyXML never reads, which is harmless. But it must not miss an element that TinyXML enters, or
// close one that TinyXML does not.
class XmlGuard {
public:
    XmlGuard(std::string_view text, int nestingLimit, int attributeLimit)
        : text_(text.substr(0, text.find('\0'))), nestingLimit_(nestingLimit),
          attributeLimit_(attributeLimit) {}

    bool isWithinLimits();

private:
    static bool isNameStart(unsigned char c) {
        return c >= 127 || std::isalpha(c) != 0 || c == '_';
    }
    static bool isNamePart(unsigned char c) {
        return isNameStart(c) || std::isdigit(c) != 0 || c == '-' || c == '.' || c == ':';
    }
    static bool isBlank(unsigned char c) { return std::isspace(c) != 0; }

    bool isAtEnd() const { return at_ >= text_.size(); }
    unsigned char current() const { return static_cast<unsigned char>(text_[at_]); }
    bool startsWith(std::string_view prefix) const {
        return text_.substr(at_, prefix.size()) == prefix;
    }
    bool startsWithWord(std::string_view lowerCase) const;

    void skipBlanks();
    void skipName();
    void skipPast(std::string_view end);
    void skipText(char end);
    bool skipAttribute();
    void skipDeclaration();
    void skipMarkup();
    void closeElement();
    bool openElement();
    void stop() { at_ = text_.size(); }

    std::string_view text_;
    int nestingLimit_;
    int attributeLimit_;
    std::size_t at_ = 0;
    int depth_ = 0;
};

bool XmlGuard::startsWithWord(std::string_view lowerCase) const {
    const std::string_view word = text_.substr(at_, lowerCase.size());
    if (word.size() != lowerCase.size())
        return false;
    for (std::size_t i = 0; i < word.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(word[i])) != lowerCase[i])
            return false;
    return true;
}

// TinyXML treats byte order marks, and two similar codes, as white space.
void XmlGuard::skipBlanks() {
    while (!isAtEnd()) {
        if (isBlank(current()))
            ++at_;
        else if (startsWith("\xEF\xBB\xBF") || startsWith("\xEF\xBF\xBE") ||
                 startsWith("\xEF\xBF\xBF"))
            at_ += 3;
        else
            return;
    }
}

void XmlGuard::skipName() {
    while (!isAtEnd() && isNamePart(current()))
        ++at_;
}

void XmlGuard::skipPast(std::string_view end) {
    const std::size_t found = text_.find(end, at_);
    at_ = found == std::string_view::npos ? text_.size() : found + end.size();
}

// Skips character data up to its end mark. Bytes after the lead byte of a sequence are skipped with
// it, even the end mark.
void XmlGuard::skipText(char end) {
    while (!isAtEnd() && current() != static_cast<unsigned char>(end)) {
        const unsigned char lead = current();
        if (lead < 0xC2 || lead > 0xF4)
            at_ += 1;
        else
            at_ += lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    }
}

// Returns false, with the position inside the attribute, if it has no name, no '=' or no value.
bool XmlGuard::skipAttribute() {
    skipBlanks();
    if (isAtEnd() || !isNameStart(current()))
        return false;
    skipName();
    skipBlanks();
    if (isAtEnd() || current() != '=')
        return false;
    ++at_;
    skipBlanks();
    if (isAtEnd())
        return false;
    const char first = text_[at_];
    if (first == '"' || first == '\'') {
        ++at_;
        skipText(first);
        ++at_;
    } else {
        while (!isAtEnd() && !isBlank(current()) && current() != '/' && current() != '>')
            ++at_;
    }
    return true;
}

void XmlGuard::skipDeclaration() {
    constexpr std::array<std::string_view, 3> attributes = {"version", "encoding", "standalone"};
    while (!isAtEnd() && current() != '>') {
        skipBlanks();
        bool isAttribute = false;
        for (const std::string_view word : attributes)
            isAttribute = isAttribute || startsWithWord(word);
        if (isAttribute)
            skipAttribute();
        else
            while (!isAtEnd() && current() != '>' && !isBlank(current()))
                ++at_;
    }
    ++at_;
}

// Skips markup in angle brackets that is not an element.
void XmlGuard::skipMarkup() {
    if (startsWithWord("<?xml")) {
        at_ += 5;
        skipDeclaration();
    } else if (startsWith("<!--")) {
        at_ += 4;
        skipPast("-->");
    } else if (startsWith("<![CDATA[")) {
        at_ += 9;
        skipPast("]]>");
    } else {
        skipPast(">");
    }
}

void XmlGuard::closeElement() {
    --depth_;
    at_ += 2;
    skipName();
    skipBlanks();
    ++at_;
}

// Skips a start tag; returns false if it exceeds a limit.
bool XmlGuard::openElement() {
    ++at_;
    skipBlanks();
    skipName();
    for (int attributes = 0; !isAtEnd(); ++attributes) {
        skipBlanks();
        if (isAtEnd())
            break;
        if (current() == '/') { // and '>': the tag of an empty element
            at_ += 2;
            return true;
        }
        if (current() == '>') {
            ++at_;
            return ++depth_ <= nestingLimit_;
        }
        if (!skipAttribute()) {
            stop(); // as TinyXML does
            return true;
        }
        if (attributes == attributeLimit_)
            return false;
    }
    return true;
}

bool XmlGuard::isWithinLimits() {
    skipBlanks();
    while (!isAtEnd()) {
        if (current() != '<') {
            skipText('<');
        } else if (depth_ > 0 && startsWith("</")) {
            closeElement();
        } else if (at_ + 1 < text_.size() &&
                   isNameStart(static_cast<unsigned char>(text_[at_ + 1]))) {
            if (!openElement())
                return false;
        } else {
            skipMarkup();
        }
        skipBlanks();
    }
    return true;
}

} // namespace

bool isWithinXmlLimits(std::string_view text, int nestingLimit, int attributeLimit) {
    return XmlGuard(text, nestingLimit, attributeLimit).isWithinLimits();
}
