// Target: the JSON of a project file, applied to an instance with every kind of control.
#include <sys/mman.h>
#include <unistd.h>

#include <fstream>

#include "fuzz/control_kinds.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/project_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::SceneOfAllKinds& all = *new fuzz::SceneOfAllKinds;
    static const int file = ::memfd_create("project", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    fuzz::require(::ftruncate(file, 0) == 0, "the file cannot be emptied");
    fuzz::require(::pwrite(file, data, size, 0) == static_cast<ssize_t>(size), "a short write");
    try {
        const pbhost::ProjectFile project = pbhost::readProject(path);
        for (const pbhost::ProjectEffect& effect : project.effects)
            pbhost::fillControls(all.scene, path, project, effect,
                                 [](const std::string&) { return all.scene.layer.id; });
    } catch (const pbhost::Failure&) {
        // Thrown for an invalid project.
    }
    for (std::size_t i = 1; i < all.scene.effect.definitions.size(); ++i)
        all.scene.effect.control(i).keyframes.clear();
    fuzz::requireNothingLeft(all.handles);
    return 0;
}
