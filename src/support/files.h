// Files and folders by their path: small value classes on the stack of a command.
//
// A path is UTF-8 text and stored as given; it is converted to UTF-16 only for system calls. A File
// owns its stream. Nothing is reported: a failure is false, an empty text or an empty list. Only a
// failed allocation throws, as the allocator does; the stream is closed even then.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string_view>

#include "platform/win32_files.h"
#include "support/jst.h"
#include "support/text.h"
#include "support/utf.h"

namespace _JST {

// The mode of a File, or that of its last attempt to open: closed, 'r' to read, 'w' to write a new
// file, 'e' to read and write an existing one, 'a' to append.
enum StreamMode : std::int32_t {
    StreamClosed = 0,
    StreamRead = 1,
    StreamWrite = 2,
    StreamEdit = 3,
    StreamAppend = 4
};

// StreamClosed for every other character.
StreamMode streamModeOf(char character);

// Null if the file can't be opened; the mode must not be StreamClosed.
std::FILE* openStream(std::string_view path, StreamMode mode);

// The bytes between the stream's position and the end of the file by its status, at most 2^32 - 1.
// A device counts as empty.
std::uint32_t bytesLeft(std::FILE* stream, std::string_view path);

// Calls `take` with the path of each file, or of each folder, directly in the folder, in the
// system's order: the folder's path as given, the system's separator, the name. "." and ".." are
// omitted.
void forEachEntry(std::string_view folder, bool areFoldersWanted,
                  const std::function<void(const NarrowString& path)>& take);

template<template<class> class Allocator>
class _FileSys : public Object {
public:
    // Whether the system has a file or a folder with this path.
    virtual bool exists() const {
        struct _stat64 status {};
        return !path_.empty() && _wstat64(widePath().c_str(), &status) == 0;
    }

    String<Allocator> path() const { return String<Allocator>(std::string_view(path_)); }

    // The text after the last "/" or "\", or the whole path.
    String<Allocator> name() const {
        const std::string_view path = path_;
        return String<Allocator>(path.substr(path.find_last_of("/\\") + 1));
    }

protected:
    explicit _FileSys(const String<Allocator>& path) : path_(path.text()) {}

    WideString widePath() const { return toWide(path_); }

    typename String<Allocator>::Text path_;
};

template<template<class> class Allocator>
class File : public _FileSys<Allocator> {
public:
    explicit File(const String<Allocator>& path) : _FileSys<Allocator>(path) {}
    ~File() override { close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int type() const override { return 4; }

    // Takes 'r', 'w', 'e' or 'a'. An open stream is closed first, even if opening then fails.
    bool open(char character) {
        close();
        const StreamMode mode = streamModeOf(character);
        if (this->path_.empty() || mode == StreamClosed)
            return false;
        mode_ = mode;
        stream_ = openStream(this->path_, mode);
        return stream_ != nullptr;
    }

    // False if buffered data could not be written; the stream is closed in any case.
    bool close() {
        if (stream_ == nullptr)
            return true;
        const bool isWritten = std::fclose(stream_) == 0;
        stream_ = nullptr;
        mode_ = StreamClosed;
        return isWritten;
    }

    // Reads that many bytes, or all for 0; the text ends at the first zero byte among them.
    String<Allocator> read(std::uint32_t count) {
        wasReadWhole_ = false;
        if (stream_ == nullptr)
            return String<Allocator>();
        if (count == 0)
            count = bytesLeft(stream_, this->path_);
        typename String<Allocator>::Text buffer(count, '\0');
        buffer.resize(std::fread(buffer.data(), 1, count, stream_));
        wasReadWhole_ = buffer.size() == count;
        return String<Allocator>(buffer.c_str());
    }

    // Whether the last read got all requested bytes, including those after a zero byte: false if
    // the file is shorter than its status says or can't be read to its end.
    bool wasReadWhole() const { return wasReadWhole_; }

    // False for an empty text too, because nothing was written.
    bool write(const String<Allocator>& text) {
        if (stream_ == nullptr || mode_ == StreamRead)
            return false;
        return std::fwrite(text.text().data(), text.text().size(), 1, stream_) == 1;
    }

    // Deletes the file, unless it is open.
    bool remove() {
        if (stream_ != nullptr || this->path_.empty())
            return false;
        return DeleteFileW(this->widePath().c_str()) != FALSE;
    }

private:
    StreamMode mode_ = StreamClosed;
    bool wasReadWhole_ = false;
    std::FILE* stream_ = nullptr;
};

template<template<class> class Allocator>
class Folder : public _FileSys<Allocator> {
public:
    explicit Folder(const String<Allocator>& path) : _FileSys<Allocator>(path) {}

    int type() const override { return 5; }

    // Creates this folder, but no parents.
    bool create() {
        return !this->path_.empty() && CreateDirectoryW(this->widePath().c_str(), nullptr) != FALSE;
    }

    // Removes an empty folder.
    bool remove() {
        return !this->path_.empty() && RemoveDirectoryW(this->widePath().c_str()) != FALSE;
    }

    // Full paths, in the system's order. Empty for a folder that can't be read; an empty path means
    // the root here, because of the separator after it.
    Array<Allocator> listFiles() const { return list(false); }
    Array<Allocator> listFolders() const { return list(true); }

private:
    Array<Allocator> list(bool areFoldersWanted) const {
        Array<Allocator> paths;
        forEachEntry(this->path_, areFoldersWanted, [&](const NarrowString& path) {
            paths.push(String<Allocator>(std::string_view(path)));
        });
        return paths;
    }
};

} // namespace _JST
