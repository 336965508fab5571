#include "pbhost/diagnostics/xml_outline.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <utility>

#include "pixelbender/xml_guard.h"

namespace pbhost {

namespace {

bool isBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool isNameStart(char c) {
    return static_cast<unsigned char>(c) >= 127 ||
           std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool isNamePart(char c) {
    return isNameStart(c) || std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '-' ||
           c == '.' || c == ':';
}

void appendUtf8(std::string& text, std::uint32_t code) {
    const auto put = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | (code >> 18 & 7));
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

// Decodes the entity in front of a text, if there is one; returns its length, or 0.
std::size_t decodeEntity(std::string_view text, std::string& decoded) {
    constexpr std::array<std::pair<std::string_view, char>, 5> named = {
        {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
    for (const auto& [name, character] : named)
        if (text.starts_with(name)) {
            decoded += character;
            return name.size();
        }
    if (!text.starts_with("&#"))
        return 0;
    const bool isHex = text.size() > 2 && text[2] == 'x';
    const char* begin = text.data() + (isHex ? 3 : 2);
    const char* const end = text.data() + text.size();
    std::uint32_t code = 0;
    const auto read = std::from_chars(std::min(begin, end), end, code, isHex ? 16 : 10);
    if (read.ec != std::errc() || read.ptr == end || *read.ptr != ';')
        return 0;
    appendUtf8(decoded, code);
    return static_cast<std::size_t>(read.ptr + 1 - text.data());
}

class OutlineReader {
public:
    OutlineReader(std::string_view document, XmlOutline& outline)
        : text_(document.substr(0, document.find('\0'))), outline_(outline) {}

    void read() {
        while (isGood() && at_ < text_.size())
            readNext();
        if (isGood() && !open_.empty())
            fail(innermost().at, innermost().name.size(),
                 "the element \"" + std::string(innermost().name) + "\" is not closed");
    }

private:
    bool isGood() const { return outline_.fault.message.empty(); }
    bool isNext(std::string_view piece) const { return text_.substr(at_).starts_with(piece); }
    XmlElement& innermost() { return outline_.elements[open_.back()]; }

    void fail(std::size_t at, std::size_t length, std::string message) {
        if (isGood())
            outline_.fault = {at, length, std::move(message)};
    }

    void skipBlanks() {
        while (at_ < text_.size() && (isBlank(text_[at_]) || isNext("\xEF\xBB\xBF")))
            at_ += isBlank(text_[at_]) ? 1 : 3;
    }

    // Skips to behind the end of a construct that begins here.
    void skipPast(std::string_view end, const char* construct) {
        const std::size_t found = text_.find(end, at_);
        if (found == std::string_view::npos)
            fail(at_, 1, std::string(construct) + " is not closed by \"" + std::string(end) + "\"");
        at_ = found == std::string_view::npos ? text_.size() : found + end.size();
    }

    void readNext() {
        skipBlanks();
        if (at_ == text_.size())
            return;
        if (text_[at_] != '<')
            readText();
        else if (isNext("<!--"))
            skipConstruct("-->", "the comment");
        else if (isNext("<![CDATA["))
            readCdata();
        else if (isNext("<?"))
            skipConstruct("?>", "the declaration");
        else if (isNext("<!"))
            skipConstruct(">", "the markup");
        else if (isNext("</"))
            closeElement();
        else
            openElement();
    }

    void skipConstruct(std::string_view end, const char* construct) {
        skipPast(end, construct);
        isFirst_ = false;
    }

    // Whether a text here is the first content of the innermost element.
    bool takesText() const { return !open_.empty() && isFirst_; }

    void readCdata() {
        const std::size_t start = at_ + 9;
        skipPast("]]>", "the CDATA section");
        if (takesText() && isGood()) {
            XmlElement& element = innermost();
            element.hasText = true;
            element.text = text_.substr(start, at_ - 3 - start);
            element.textMap.add(0, start, element.text.size());
        }
        isFirst_ = false;
    }

    void readText() {
        const std::size_t start = at_;
        at_ = std::min(text_.find('<', at_), text_.size());
        if (open_.empty())
            fail(start, 1, "there is text outside of all elements");
        if (takesText())
            decodeText(start, at_, innermost());
        isFirst_ = false;
    }

    void decodeText(std::size_t start, std::size_t end, XmlElement& element) const {
        element.hasText = true;
        bool isBlankPending = false;
        for (std::size_t at = start; at < end;) {
            if (isBlank(text_[at])) {
                isBlankPending = true;
                ++at;
                continue;
            }
            if (std::exchange(isBlankPending, false))
                element.text += ' ';
            const std::size_t entity = decodeEntity(text_.substr(at, end - at), element.text);
            if (entity == 0) {
                element.textMap.add(element.text.size(), at, 1);
                element.text += text_[at];
            }
            at += std::max<std::size_t>(entity, 1);
        }
    }

    std::string_view readName() {
        const std::size_t start = at_;
        if (at_ < text_.size() && isNameStart(text_[at_]))
            while (at_ < text_.size() && isNamePart(text_[at_]))
                ++at_;
        return text_.substr(start, at_ - start);
    }

    void closeElement() {
        const std::size_t start = at_;
        at_ += 2;
        const std::string_view name = readName();
        skipBlanks();
        if (open_.empty()) {
            fail(start + 2, name.size(),
                 "\"</" + std::string(name) + ">\" closes an element that is not open");
            return;
        }
        if (name != innermost().name) {
            fail(start + 2, name.size(),
                 "\"</" + std::string(name) +
                     ">\" does not close the innermost element, which is \"" +
                     std::string(innermost().name) + "\"");
            return;
        }
        if (!isNext(">"))
            fail(at_, 1, "a '>' is missing behind \"</" + std::string(name) + "\"");
        ++at_;
        open_.pop_back();
        isFirst_ = false;
    }

    void openElement() {
        const std::size_t start = at_++;
        const std::string_view name = readName();
        if (name.empty())
            return fail(start, 1, "a '<' must be followed by a name; write &lt; in a text");
        if (open_.size() == maxXmlNesting)
            return fail(start, 1,
                        "elements are nested deeper than " + std::to_string(maxXmlNesting) +
                            " levels");
        (open_.empty() ? outline_.roots : innermost().children).push_back(outline_.elements.size());
        XmlElement& element = outline_.elements.emplace_back();
        element.name = name;
        element.at = start + 1;
        const bool isEmpty = readAttributes(element);
        if (!isEmpty)
            open_.push_back(outline_.elements.size() - 1);
        isFirst_ = !isEmpty;
    }

    // Reads up to the end of the tag; true for an element without content.
    bool readAttributes(XmlElement& element) {
        while (isGood()) {
            skipBlanks();
            if (isNext("/>")) {
                at_ += 2;
                return true;
            }
            if (isNext(">")) {
                ++at_;
                return false;
            }
            readAttribute(element);
        }
        return true;
    }

    void readAttribute(XmlElement& element) {
        const std::size_t start = at_;
        XmlAttribute attribute;
        attribute.name = readName();
        attribute.at = start;
        const std::string element_name(element.name), name(attribute.name);
        if (attribute.name.empty())
            return fail(start, 1, "the tag of \"" + element_name + "\" is not closed by '>'");
        skipBlanks();
        if (!isNext("="))
            return fail(start, name.size(), "the attribute \"" + name + "\" has no value");
        ++at_;
        skipBlanks();
        if (!isNext("\"") && !isNext("'"))
            return fail(start, name.size(),
                        "the value of the attribute \"" + name + "\" is not in quotes");
        const char quote = text_[at_++];
        attribute.valueAt = at_;
        const std::size_t end = text_.find(quote, at_);
        if (end == std::string_view::npos)
            return fail(start, name.size(),
                        "the value of the attribute \"" + name + "\" has no closing quote");
        attribute.valueLength = end - at_;
        while (at_ < end) {
            const std::size_t entity = decodeEntity(text_.substr(at_, end - at_), attribute.value);
            if (entity == 0)
                attribute.value += text_[at_];
            at_ += std::max<std::size_t>(entity, 1);
        }
        ++at_;
        if (element.attribute(attribute.name) != nullptr)
            return fail(start, name.size(), "the attribute \"" + name + "\" is given twice");
        if (element.attributes.size() == maxXmlAttributes)
            return fail(start, name.size(),
                        "there are more than " + std::to_string(maxXmlAttributes) + " attributes");
        element.attributes.push_back(std::move(attribute));
    }

    std::string_view text_;
    XmlOutline& outline_;
    std::size_t at_ = 0;
    std::vector<std::size_t> open_; // indices of the elements that are not closed
    bool isFirst_ = false;          // nothing has followed the innermost element's tag
};

} // namespace

const XmlAttribute* XmlElement::attribute(std::string_view wanted) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const XmlAttribute& each) { return each.name == wanted; });
    return found == attributes.end() ? nullptr : &*found;
}

XmlOutline::XmlOutline(std::string_view document) {
    OutlineReader(document, *this).read();
}

const XmlElement* XmlOutline::root(std::string_view name) const {
    for (const std::size_t index : roots)
        if (elements[index].name == name)
            return &elements[index];
    return nullptr;
}

std::vector<const XmlElement*> XmlOutline::children(const XmlElement& parent,
                                                    std::string_view name) const {
    std::vector<const XmlElement*> found;
    for (const std::size_t index : parent.children)
        if (elements[index].name == name)
            found.push_back(&elements[index]);
    return found;
}

} // namespace pbhost
