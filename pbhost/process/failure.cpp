#include "pbhost/process/failure.h"

#include <iostream>

#include "pbhost/files/printable.h"

namespace pbhost {

namespace {

int complain(ExitCode code, const std::string& message) {
    std::cerr << "pbhost: " << printable(message) << (message.ends_with('\n') ? "" : "\n");
    return static_cast<int>(code);
}

} // namespace

int exitCodeOf(const std::function<int()>& work) {
    try {
        return work();
    } catch (const Failure& failure) {
        return complain(failure.code, failure.what());
    } catch (const std::bad_alloc&) {
        return complain(ExitCode::RenderFailed, "out of memory");
    } catch (long) { // what the code that is shared with the module throws
        return complain(ExitCode::RenderFailed, "out of memory");
    } catch (const std::exception& error) {
        return complain(ExitCode::RenderFailed, error.what());
    }
}

} // namespace pbhost
