// OpenGL's texture calls with less kindness than drivers have: storage that is made without pixels
// holds some, as it may. And a count of the uploads, and of the bytes of storage
// (bench/texture_bytes.h). In force in each program that uses this.
#pragma once

// Uploads into a texture since the last call, or the start.
int takeUploads();
