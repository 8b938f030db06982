/*
 * The device's UI and system library, liblectern.so: what the project calls of it.
 *
 * On a device the device's own library supplies these; on every other machine the stand-in under
 * platform/host does. A null handle is allowed wherever a LecternConfig is taken.
 */
#ifndef TAVRO_PLATFORM_LECTERN_H
#define TAVRO_PLATFORM_LECTERN_H

#ifdef __cplusplus
extern "C" {
#endif

/* One open key/value file. */
typedef struct LecternConfig LecternConfig;

/*
 * Parses the file at path. A missing file in an existing folder gives an empty handle (saving
 * creates the file); an unreadable path or a missing folder gives null. defaults is always null
 * here. Free the handle with CloseConfig or CloseConfigNoSave.
 */
LecternConfig* OpenConfig(const char* path, const void* defaults);

/* The value of key, owned by the handle, or fallback when the key is absent or the handle null. */
const char* ReadString(LecternConfig* config, const char* key, const char* fallback);

/* The value of key as a decimal number, or fallback likewise. */
int ReadInt(LecternConfig* config, const char* key, int fallback);

/* The revealed value of a key written with WriteSecret, owned by the handle, or fallback. */
const char* ReadSecret(LecternConfig* config, const char* key, const char* fallback);

/* Stores value so that it is not readable as plain text in the file. */
void WriteSecret(LecternConfig* config, const char* key, const char* value);

/* Saves (atomically, mode 0600 for a new file) and frees: 0, or -1 when saving failed. */
int CloseConfig(LecternConfig* config);

/* Frees without saving. */
void CloseConfigNoSave(LecternConfig* config);

/* The device's partner code. */
int GetCustomizedPartner(void);

/* Starts the library up for this process. */
void InitLectern(int flags);

/*
 * Writes at most size hash bytes of the file's content to buffer and returns how many; 0 or less
 * when the file cannot be read.
 */
int FastBookHash(const char* path, char* buffer, int size);

/* Opens an application with its parameters. */
int OpenBook(const char* path, const char* parameters, int flags);

/* Sends an event to another application. */
int SendEventTo(int target, int type, int parameter1, int parameter2);

/*
 * A bitmap: width, height, depth in bits, bytes per row, pixels. One malloc block, released with
 * free.
 */
typedef struct LecternBitmap LecternBitmap;

/* A grey bitmap scaled to width x height, or null when the file is no readable JPEG. */
LecternBitmap* LoadJPEG(const char* path, int width, int height, int brightness, int contrast,
                        int proportional);

/* A grey bitmap stretched to width x height, or null when the file is no readable PNG. */
LecternBitmap* LoadPNGStretch(const char* path, int width, int height, int proportional,
                              int dither);

/* A bitmap in the size of the file, or null when the file is no readable BMP. */
LecternBitmap* LoadBitmap(const char* path);

#ifdef __cplusplus
}
#endif

#endif
