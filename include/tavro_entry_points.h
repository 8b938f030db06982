/**
 * @file
 * What the library browser asks about a file of the sync folder. Plain C: C99 and C++.
 *
 * None of these functions may be entered from two threads at once.
 */
#ifndef TAVRO_ENTRY_POINTS_H
#define TAVRO_ENTRY_POINTS_H

#if defined(__GNUC__)
#define TAVRO_EXPORTED __attribute__((visibility("default")))
#else
#define TAVRO_EXPORTED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The leading part of the browser's record of a book: slots of a pointer's size. The reserved slots
 * are the browser's and are never touched.
 */
struct tavro_book_info {
    void* reserved_0_to_3[4];   /**< the browser's */
    char* title;                /**< slot 4 */
    char* author;               /**< slot 5 */
    void* reserved_6_to_7[2];   /**< the browser's */
    char* category_id;          /**< slot 8 */
    void* reserved_9_to_21[13]; /**< the browser's */
    char* isbn;                 /**< slot 22 */
};

/**
 * Fills the four named slots with the description of a book. Each gets a new string, empty where
 * the catalogue has nothing, that the caller frees; what stood there before is overwritten, not
 * freed.
 *
 * Keeps one session for the life of the process, made at the first call: an account that is set up
 * later is not seen. Waits for the book map's lock.
 *
 * @param path full path of the book's file.
 * @param info the record to fill.
 * @return 0, or -1 with `info` untouched when `path` is outside the sync folder or the catalogue
 *     does not know its book.
 */
TAVRO_EXPORTED int tavro_get_book_info(const char* path, struct tavro_book_info* info);

/**
 * Tells whether a file stands for a book that is still to be downloaded.
 *
 * Waits while the synchronisation application rewrites the download list. A result of 2 keeps a
 * descriptor with the list's shared lock until the process ends: ask once for each pending file,
 * and keep the answer.
 *
 * @param path full path of the file.
 * @return 0: it stands for no other file; 1: its download is not pending (or nobody knows); 2: it
 *     is pending.
 */
TAVRO_EXPORTED int tavro_get_book_status(const char* path);

/**
 * Loads the cover of a book, an image that the synchronisation application has fetched: nothing is
 * fetched here. Makes a session of its own for each call and waits for the book map's lock.
 *
 * @param path full path of the book's file.
 * @param width of the result in pixels; a BMP cover keeps its own size.
 * @param height of the result in pixels, likewise.
 * @return the platform's bitmap, which the caller frees, or null when `path` is outside the sync
 *     folder, its book is unknown, or there is no readable cover.
 */
TAVRO_EXPORTED void* tavro_get_book_cover(const char* path, int width, int height);

#ifdef __cplusplus
}
#endif

#undef TAVRO_EXPORTED

#endif
