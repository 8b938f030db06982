/* Lists the books of a sync folder as a library browser shows them: state, title, author, cover. */

#define _XOPEN_SOURCE 700

#include <dirent.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tavro/tavro_entry_points.h>

/* The bitmap is the platform's own. Where its stand-in is installed, its size can be read. */
#ifdef __has_include
#if __has_include(<tavro/platform/lectern_host.h>)
#include <tavro/platform/lectern_host.h>
#define BITMAP_IS_KNOWN
#endif
#endif

enum { cover_width = 300, cover_height = 400 };

static const char* statusText(int status) {
    static const char* const texts[] = {"present", "not pending", "pending"};
    return status >= 0 && status <= 2 ? texts[status] : "unknown";
}

static void showCover(const char* path) {
    void* const bitmap = tavro_get_book_cover(path, cover_width, cover_height);
    if (bitmap == NULL) {
        puts("  cover   no");
        return;
    }
#ifdef BITMAP_IS_KNOWN
    const struct LecternBitmap* const size = bitmap;
    printf("  cover   yes %dx%d\n", size->width, size->height);
#else
    puts("  cover   yes");
#endif
    free(bitmap);
}

static void showBook(const char* path, const char* name) {
    struct tavro_book_info info = {0};
    printf("%s\n  status  %s\n", name, statusText(tavro_get_book_status(path)));
    if (tavro_get_book_info(path, &info) == 0)
        printf("  title   %s\n  author  %s\n", info.title, info.author);
    else
        puts("  not in the catalogue");
    free(info.title);
    free(info.author);
    free(info.category_id);
    free(info.isbn);
    showCover(path);
}

/* The full path of the file name in folder, which the caller frees; null without memory. */
static char* join(const char* folder, const char* name) {
    const size_t size = strlen(folder) + strlen(name) + 2;
    char* const path = malloc(size);
    if (path != NULL)
        snprintf(path, size, "%s/%s", folder, name);
    return path;
}

/* Shows the entry name of folder if it is a visible file. Returns 0, or -1 without memory. */
static int showEntry(const char* folder, const char* name) {
    struct stat status;
    char* const path = join(folder, name);
    if (path == NULL)
        return -1;
    if (name[0] != '.' && stat(path, &status) == 0 && S_ISREG(status.st_mode))
        showBook(path, name);
    free(path);
    return 0;
}

static int showFolder(const char* folder) {
    struct dirent** entries = NULL;
    const int count = scandir(folder, &entries, NULL, alphasort);
    int result = count < 0 ? -1 : 0;
    for (int index = 0; index < count; ++index) {
        if (result == 0)
            result = showEntry(folder, entries[index]->d_name);
        free(entries[index]);
    }
    free(entries);
    return result;
}

int main(int count, char** values) {
    if (count != 2) {
        fputs("Usage: library_browser SYNC-FOLDER\n", stderr);
        return 2;
    }
    char* const folder = realpath(values[1], NULL); /* the library wants full paths */
    int result = 0;
    if (folder == NULL || showFolder(folder) != 0) {
        fprintf(stderr, "library_browser: %s: %s\n", values[1], strerror(errno));
        result = EXIT_FAILURE;
    }
    free(folder);
    return result;
}
