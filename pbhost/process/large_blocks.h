// Memory settings for a process that renders with a software OpenGL driver.
#pragma once

namespace pbhost {

// A software driver allocates texture memory for each frame. This makes the C library keep freed
// large blocks, which avoids a page fault for each 4 KB, and reserves the first half gigabyte in
// huge pages if the system has them. Applies to the whole process, with one heap for all threads;
// call it before the first large allocation and before starting threads.
void keepLargeBlocks();

} // namespace pbhost
