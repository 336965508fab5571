// Text and lists of text for the file and script code: small value classes over an allocator.
//
// Each object owns its text. Positions are in bytes of UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace _JST {

// Base class of the library; `type` is 1 for an Array, 3 for a String, 4 for a File, 5 for a
// Folder.
class Object {
public:
    virtual ~Object() = default;
    virtual int type() const = 0;

protected:
    Object() = default;
    Object(const Object&) = default;
    Object& operator=(const Object&) = default;
};

template<template<class> class Allocator>
class Array;

template<template<class> class Allocator>
class String : public Object {
public:
    using Text = std::basic_string<char, std::char_traits<char>, Allocator<char>>;

    String(const char* text = "") : text_(text) {}
    explicit String(std::string_view text) : text_(text) {}

    int type() const override { return 3; }

    const Text& text() const { return text_; }

    String& append(const char* text) {
        text_.append(text);
        return *this;
    }

    // The text from byte `from` up to byte `to`, which is not included; 0 for `to` means the end.
    // Empty if from is after to.
    String substring(std::uint32_t from, std::uint32_t to) const {
        const std::size_t end = to == 0 ? text_.size() : to;
        if (from > end || from >= text_.size())
            return String();
        return String(std::string_view(text_).substr(from, end - from));
    }

    // k delimiters give k + 1 pieces, including empty ones. An empty delimiter does not split.
    Array<Allocator> split(const String& delimiter) const {
        const std::string_view mark = delimiter.text_.c_str();
        Array<Allocator> pieces;
        std::string_view rest = text_;
        for (;;) {
            const std::size_t at = mark.empty() ? std::string_view::npos : rest.find(mark);
            pieces.push(String(rest.substr(0, at)));
            if (at == std::string_view::npos)
                return pieces;
            rest.remove_prefix(at + mark.size());
        }
    }

private:
    Text text_;
};

template<template<class> class Allocator>
class Array : public Object {
public:
    int type() const override { return 1; }

    std::size_t size() const { return texts_.size(); }
    const String<Allocator>& operator[](std::size_t index) const { return texts_[index]; }

    // The text may be an element of this array.
    void push(const String<Allocator>& text) { texts_.push_back(text); }

    String<Allocator> join(const String<Allocator>& separator) const {
        String<Allocator> whole;
        for (std::size_t i = 0; i < texts_.size(); ++i) {
            if (i > 0)
                whole.append(separator.text().c_str());
            whole.append(texts_[i].text().c_str());
        }
        return whole;
    }

private:
    std::vector<String<Allocator>, Allocator<String<Allocator>>> texts_;
};

} // namespace _JST
