#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include "support/files.h"
#include "tests/support/running_command.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

using File = _JST::File<aeAllocator>;
using Folder = _JST::Folder<aeAllocator>;
using Names = std::set<std::string>; // the system's order is unspecified

std::ptrdiff_t openDescriptors() {
#ifdef _WIN32 // an open file would keep the test's folder from being removed
    return 0;
#else
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
#endif
}

// Each test uses its own folder and must leave no file open.
class Files : public RunningCommand {
protected:
    ~Files() override { EXPECT_EQ(openDescriptors(), descriptorsBefore_); }

    std::string in(const std::string& name) const { return root_ + "/" + name; }

    std::string put(const std::string& name, const std::string& bytes = "") const {
        std::ofstream(pathOf(in(name)), std::ios::binary) << bytes;
        return in(name);
    }

    static std::string readAll(const std::string& path) {
        File file(path.c_str());
        EXPECT_TRUE(file.open('r')) << path;
        return std::string(file.read(0).text());
    }

    // The names in a list; each path must exist.
    static Names namesIn(const _JST::Array<aeAllocator>& list) {
        Names names;
        for (std::size_t i = 0; i < list.size(); ++i) {
            EXPECT_TRUE(File(list[i]).exists()) << list[i].text();
            names.insert(textOf(pathOf(std::string(list[i].text())).filename()));
        }
        EXPECT_EQ(names.size(), list.size());
        return names;
    }

    const TemporaryFolder temporary_;
    const std::string& root_ = temporary_.path;
    std::ptrdiff_t descriptorsBefore_ = openDescriptors();
};

} // namespace

TEST_F(Files, OpenModes) {
    File file(in("log.txt").c_str());
    EXPECT_FALSE(file.open('r') || file.open('e') || file.open('x') || file.exists());
    EXPECT_TRUE(file.close() && file.read(3).text().empty() && !file.write("closed"));
    EXPECT_TRUE(file.open('w') && file.write("one\r\ntwo\n"));
    EXPECT_FALSE(file.write("") || file.remove());
    EXPECT_TRUE(file.open('a') && file.write("three")); // closing in between writes the data
    EXPECT_EQ(file.read(0).text(), "") << "only for writing";
    EXPECT_TRUE(file.open('e') && file.write("ONE"));
    EXPECT_EQ(file.read(0).text(), "\r\ntwo\nthree");
    EXPECT_TRUE(file.open('r') && !file.write("never"));
    EXPECT_EQ(file.read(4).text(), "ONE\r");
    EXPECT_TRUE(file.wasReadWhole());
    EXPECT_EQ(file.read(0).text(), "\ntwo\nthree") << "the rest begins at the stream's position";
    EXPECT_EQ(file.read(0).text() + file.read(9).text(), "");
    EXPECT_TRUE(file.open('r') && file.read(1000).text() == "ONE\r\ntwo\nthree");
    EXPECT_FALSE(file.wasReadWhole());
    EXPECT_TRUE(file.open('r') && file.read(0).text() == "ONE\r\ntwo\nthree");
    EXPECT_TRUE(file.wasReadWhole());
    EXPECT_FALSE(file.open('?') || file.write("no stream any more"));
    File zero(put("zero", "12345\0 789"s).c_str());
    EXPECT_TRUE(zero.open('r') && zero.read(0).text() == "12345") << "a text ends at a zero byte";
    EXPECT_TRUE(zero.wasReadWhole() && zero.close());
    EXPECT_TRUE(file.open('w') && file.close() && fs::is_empty(in("log.txt")));
    EXPECT_TRUE(file.remove() && !file.exists() && !file.remove());
}

#ifdef _WIN32

TEST_F(Files, NonFilesAreNotOpened) {
    for (const std::string& path : {""s, root_, in("none/file"), in("a*")})
        for (const char mode : "rewa")
            EXPECT_FALSE(File(path.c_str()).open(mode)) << path << " " << mode;
    EXPECT_FALSE(File(std::string(1U << 20, '\\').c_str()).exists()) << "no path is that long";
}

TEST_F(Files, OpensPathsOfEveryForm) {
    const std::string root = fs::path(root_).make_preferred().string();
    ASSERT_EQ(root.substr(1, 2), ":\\");
    const std::string share = "\\\\localhost\\" + root.substr(0, 1) + "$" + root.substr(2);
    put("a.pbk", "found");
    for (const std::string& folder :
         {root, root + "\\", root_ + "/", "\\\\?\\" + root, share, share + "\\"}) {
        EXPECT_TRUE(Folder(folder.c_str()).exists()) << folder;
        EXPECT_EQ(namesIn(Folder(folder.c_str()).listFiles()), Names{"a.pbk"}) << folder;
        EXPECT_EQ(readAll(folder + "\\a.pbk"), "found") << folder;
    }
    std::string deep = root_; // longer than the system's limit for plain paths
    for (int level = 0; level < 8; ++level) {
        deep += "/" + std::string(50, static_cast<char>('a' + level));
        EXPECT_TRUE(Folder(deep.c_str()).create()) << deep.size();
    }
    File file((deep + "/\xe6\x97\xa5.pbk").c_str());
    EXPECT_TRUE(file.open('w') && file.write("deep") && file.close() && file.exists());
    EXPECT_EQ(readAll(file.path().text().c_str()), "deep");
    EXPECT_EQ(readAll(share + file.path().text().substr(root_.size()).c_str()), "deep");
    EXPECT_EQ(namesIn(Folder(deep.c_str()).listFiles()), Names{"\xe6\x97\xa5.pbk"});
    EXPECT_TRUE(file.remove());
    for (; deep != root_; deep.resize(deep.rfind('/')))
        EXPECT_TRUE(Folder(deep.c_str()).remove()) << deep.size();
}

TEST_F(Files, LockedAndForbiddenFilesAreUnchanged) {
    const std::string path = put("locked.pbk", "text");
    HANDLE other =
        CreateFileW(fs::path(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    for (const char mode : {'r', 'w', 'e', 'a'})
        EXPECT_FALSE(File(path.c_str()).open(mode)) << mode;
    EXPECT_TRUE(File(path.c_str()).exists() && !File(path.c_str()).remove());
    CloseHandle(other);
    EXPECT_EQ(readAll(path), "text");
    SetFileAttributesW(fs::path(path).c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(File(path.c_str()).remove());
    // Wine under root lets every program write to it.
    HANDLE writer =
        CreateFileW(fs::path(path).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    CloseHandle(writer);
    for (const char mode : {'e', 'a'})
        EXPECT_EQ(File(path.c_str()).open(mode), writer != INVALID_HANDLE_VALUE) << mode;
    EXPECT_EQ(readAll(path), "text");
    SetFileAttributesW(fs::path(path).c_str(), FILE_ATTRIBUTE_NORMAL);
}

#else

TEST_F(Files, NonFilesAreNotOpenedAndNeverBlock) {
    EXPECT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
    for (const std::string& path : {""s, root_, in("pipe"), in("none/file")})
        for (const char mode : "rewa")
            EXPECT_FALSE(File(path.c_str()).open(mode)) << path << " " << mode;
    EXPECT_FALSE(File(std::string(1U << 20, '\\').c_str()).exists()) << "no path is that long";
    EXPECT_EQ(readAll("/dev/zero"), "") << "has no size, and no end either";
    File full("/dev/full");
    EXPECT_TRUE(full.open('w') && full.write("text"));
    EXPECT_FALSE(full.close()) << "the stream could not write what it had taken";
    EXPECT_TRUE(full.close());
}

#endif

TEST_F(Files, AFolderListsAllRepresentableNames) {
    const std::string folder = "\xe6\x97\xa5\xe6\x9c\xac \xf0\x9f\x8e\xa8";
    EXPECT_TRUE(Folder(in(folder).c_str()).create() && fs::is_directory(pathOf(in(folder))));
    Names files = {"\xf0\x9d\x84\x9e.pbk", std::string(255, 'n'), "README", ".hidden"};
#ifndef _WIN32
    files.insert("a\\b");
    put(folder + "/a\\b"); // a backslash is possible only in an existing file's name
#endif
    for (const std::string& name : files) {
        File file(in(folder + "/" + name).c_str());
        EXPECT_TRUE(file.open('w') && file.write(name.c_str()) && file.close()) << name;
        EXPECT_EQ(fs::file_size(pathOf(in(folder + "/" + name))), name.size());
    }
    fs::create_directories(pathOf(in(folder + "/sub.folder/deep")));
    Names folders = {"sub.folder"};
#ifndef _WIN32
    put(folder + "/no \xff text"); // cannot be represented in UTF-16
    fs::create_directory_symlink(root_, in(folder + "/link"));
    folders.insert("link");
#endif
    for (const std::string& path : {in(folder), in(folder) + "/", root_ + "\\" + folder + "\\"}) {
        EXPECT_EQ(namesIn(Folder(path.c_str()).listFiles()), files) << path;
        EXPECT_EQ(namesIn(Folder(path.c_str()).listFolders()), folders);
    }
    EXPECT_EQ(pathOf(std::string(Folder(root_.c_str()).listFolders()[0].text())),
              pathOf(in(folder)));
#ifndef _WIN32
    EXPECT_EQ(Folder((root_ + "/").c_str()).listFolders()[0].text(), in("/" + folder).c_str());
#endif
    EXPECT_EQ(File("a").type() * 10 + Folder("a").type(), 45);
    for (const char* other : {"none", "README"})
        EXPECT_EQ(Folder(in(folder + "/" + other).c_str()).listFiles().size(), 0U);
}
