/**
 * @file
 * The device's UI and system library, liblectern.so: what the project calls of it.
 *
 * On a device the device's own library supplies these; on every other machine the stand-in under
 * platform/host does. A null handle is allowed wherever a LecternConfig is taken. Numbers whose
 * meaning is the device's own go through as they are.
 */
#ifndef TAVRO_PLATFORM_LECTERN_H
#define TAVRO_PLATFORM_LECTERN_H

#ifdef __cplusplus
extern "C" {
#endif

/** One open key/value file. */
typedef struct LecternConfig LecternConfig;

/**
 * Parses a key/value file.
 *
 * @param path of the file.
 * @param defaults always null here.
 * @return the handle, to be freed with CloseConfig or CloseConfigNoSave; an empty one for a missing
 *     file in an existing folder (saving creates the file); null for an unreadable path or a
 *     missing folder.
 */
LecternConfig* OpenConfig(const char* path, const void* defaults);

/**
 * Reads a text.
 *
 * @param config the handle.
 * @param key what to read.
 * @param fallback returned when the key is absent or the handle null.
 * @return the value, owned by the handle, or `fallback` itself.
 */
const char* ReadString(LecternConfig* config, const char* key, const char* fallback);

/**
 * Reads a decimal number.
 *
 * @param config the handle.
 * @param key what to read.
 * @param fallback returned likewise, and when the value is no number.
 * @return the value, or `fallback`.
 */
int ReadInt(LecternConfig* config, const char* key, int fallback);

/**
 * Reveals a text written with WriteSecret.
 *
 * @param config the handle.
 * @param key what to read.
 * @param fallback returned likewise, and when the value is no secret or damaged.
 * @return the text, owned by the handle, or `fallback` itself.
 */
const char* ReadSecret(LecternConfig* config, const char* key, const char* fallback);

/**
 * Stores a text so that it is not readable as plain text in the file.
 *
 * @param config the handle.
 * @param key where to store it.
 * @param value the text, which is copied.
 */
void WriteSecret(LecternConfig* config, const char* key, const char* value);

/**
 * Saves (atomically, mode 0600 for a new file) and frees.
 *
 * @param config the handle.
 * @return 0, or -1 with the reason in `errno` when saving failed; the handle is freed either way.
 */
int CloseConfig(LecternConfig* config);

/**
 * Frees without saving.
 *
 * @param config the handle.
 */
void CloseConfigNoSave(LecternConfig* config);

/** @return the device's partner code. */
int GetCustomizedPartner(void);

/**
 * Starts the library up for this process.
 *
 * @param flags the device's own.
 */
void InitLectern(int flags);

/**
 * Hashes a file's content.
 *
 * @param path of the file.
 * @param buffer where the hash goes, without a terminating zero.
 * @param size of `buffer` in bytes.
 * @return how many bytes of `buffer` were written; 0 or less when the file cannot be read.
 */
int FastBookHash(const char* path, char* buffer, int size);

/**
 * Opens an application.
 *
 * @param path of the application.
 * @param parameters for the application, one text.
 * @param flags the device's own.
 * @return the device's own.
 */
int OpenBook(const char* path, const char* parameters, int flags);

/**
 * Sends an event to another application.
 *
 * @param target the application, a number of the device's own.
 * @param type of the event, likewise.
 * @param parameter1 goes with the event.
 * @param parameter2 goes with the event.
 * @return the device's own.
 */
int SendEventTo(int target, int type, int parameter1, int parameter2);

/**
 * A bitmap: width, height, depth in bits, bytes per row, pixels. One malloc block, released with
 * free.
 */
typedef struct LecternBitmap LecternBitmap;

/**
 * Loads a JPEG, scaled, in grey.
 *
 * @param path of the file.
 * @param width in pixels to scale to.
 * @param height in pixels to scale to.
 * @param brightness in percent; 100 changes nothing.
 * @param contrast around middle grey in percent; 100 changes nothing.
 * @param proportional unless 0, the picture keeps its proportions and fits into `width` x `height`.
 * @return the bitmap, or null when the file is no readable JPEG.
 */
LecternBitmap* LoadJPEG(const char* path, int width, int height, int brightness, int contrast,
                        int proportional);

/**
 * Loads a PNG, stretched, in grey.
 *
 * @param path of the file.
 * @param width of the result in pixels.
 * @param height of the result in pixels.
 * @param proportional the device's own; the stand-in always stretches.
 * @param dither the device's own; the stand-in never dithers.
 * @return the bitmap, or null when the file is no readable PNG.
 */
LecternBitmap* LoadPNGStretch(const char* path, int width, int height, int proportional,
                              int dither);

/**
 * Loads a BMP in the size of the file.
 *
 * @param path of the file.
 * @return the bitmap, or null when the file is no readable BMP.
 */
LecternBitmap* LoadBitmap(const char* path);

#ifdef __cplusplus
}
#endif

#endif
