/*
 * Calls of the stand-in liblectern.so beyond those of the device's library, for the project's own
 * tools and tests. Code that is to run on a device must not use them.
 */
#ifndef TAVRO_PLATFORM_LECTERN_HOST_H
#define TAVRO_PLATFORM_LECTERN_HOST_H

#include "lectern.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Makes value the text of key; the file changes when CloseConfig saves. Any text reads back as it
 * was given, line breaks and outer blanks included. Returns 0, or -1 with nothing changed when an
 * argument is null or key cannot stand in the file: it is empty, begins with '#', begins or ends
 * with a blank, or contains '=' or a line break.
 */
int WriteString(LecternConfig* config, const char* key, const char* value);

/* Removes every line of key. Returns 0, also when there was none, or -1 for a null argument. */
int RemoveKey(LecternConfig* config, const char* key);

/*
 * What the image loaders return: this header and, right behind it in the same block, height rows of
 * row_bytes bytes each, the upper row first. Depth is 8: a byte for each pixel, 0 black and 255
 * white. Release it with free.
 */
struct LecternBitmap {
    unsigned short width;
    unsigned short height;
    unsigned short depth;
    unsigned short row_bytes;
};

/* The first byte of the upper row of bitmap, which must not be null. */
static inline unsigned char* LecternBitmapPixels(LecternBitmap* bitmap) {
    return (unsigned char*)(bitmap + 1);
}

#ifdef __cplusplus
}
#endif

#endif
