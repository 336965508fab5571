// What all tabs of a server share: the file, the pictures, and the files that wait for a download.
//
// The page names pictures by their number, so that it cannot make the server read other files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "pbhost/live/child/message.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/frame_clock.h"

namespace pbhost::live {

struct LiveRequest {
    std::string file;    // .pbk or .pbg; empty: given by the project
    std::string project; // may be empty
    std::vector<std::string> inputs;
    std::pair<unsigned, unsigned> size; // of a layer without a picture, pixels; 0: the default
    std::vector<std::string> settings;  // CONTROL=V[,V...]
    std::string frames;                 // of the time slider; empty: those on disk
    double framesPerSecond = FrameClock().framesPerSecond;
    int depth = 0; // bits; 0: the picture's
    std::string listen = "127.0.0.1";
    unsigned port = 0;   // 0: any
    double timeout = 30; // seconds that a render process may take for an answer
    bool opensBrowser = false;
};

// Most bytes of a dropped file, and of all of them.
inline constexpr std::size_t largestDrop = std::size_t{64} << 20;
inline constexpr std::size_t largestDrops = std::size_t{1} << 30;

class Workspace {
public:
    // Throws Failure: BadPicture if a picture does not exist, Usage for invalid frames.
    explicit Workspace(const LiveRequest& asked);

    // Returns its number; the same for the same file.
    std::size_t addPicture(const std::string& file);
    // Stores a dropped file and returns its number. Throws Failure (Usage) if the drops take too
    // much space.
    std::size_t addDrop(std::string_view name, std::string_view content);
    // "id", "name" and "file" of each picture, and whether it "isTemporary", a dropped file.
    Data pictures() const;

    // The clock of the time slider: "fps", "first" and "last" frame, and "isWanted" if there are
    // frames to show. Without frames, there are ten seconds.
    Data clock() const;

    // A new file in the temporary folder, for a picture or project to be downloaded.
    std::string newFile(std::string_view extension);
    // The text without the path of the temporary folder.
    std::string withoutFolder(std::string text) const;
    // Reads a file of newFile by its name and removes it; empty if there is none.
    std::string takeFile(std::string_view name);

    // Replaces the numbers of pictures in a request of the page by files, and files in a reply of a
    // render process by numbers. Throws Failure (Usage) for an unknown number.
    void namePictures(Data& request) const;
    void numberPictures(Data& reply);

    const LiveRequest request;

private:
    std::string fileOf(const Data& number) const;
    std::string folderPrefix() const;
    void findFrames();

    TemporaryFolder folder_;
    std::optional<std::pair<long, long>> frames_; // first and last; nothing: no sequence
    std::vector<std::string> pictures_;
    std::size_t dropBytes_ = 0;
    std::size_t files_ = 0; // created so far
};

} // namespace pbhost::live
