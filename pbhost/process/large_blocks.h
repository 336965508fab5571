// How a host process should treat its memory when OpenGL is a software driver.
#pragma once

namespace pbhost {

// A software driver takes a texture's memory anew for each frame. From here on the C library keeps
// large blocks instead of giving them back, so that they need not come from the system again, a
// page fault for each 4 KB. The first half a gigabyte comes in huge pages where the system has
// them. For the whole process; call it before the first large block and the
// first thread, since all threads share one heap then.
void keepLargeBlocks();

} // namespace pbhost
