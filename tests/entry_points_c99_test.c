/* The entry points as a program in C99 sees them: the declarations, the record and the linkage. */
#include <stddef.h>
#include <stdio.h>

#include "tavro_entry_points.h"

int main(void) {
    struct tavro_book_info info = {{0}, 0, 0, {0}, 0, {0}, 0};
    const size_t isbn = offsetof(struct tavro_book_info, isbn);
    const int found = tavro_get_book_info("/nowhere/book.epub", &info);
    const int status = tavro_get_book_status("/nowhere/book.epub");
    const void* cover = tavro_get_book_cover("/nowhere/book.epub", 10, 10);
    printf("info %d, status %d, cover %p, isbn at %lu\n", found, status, cover,
           (unsigned long)isbn);
    return found == -1 && status == 0 && cover == NULL && isbn == 22 * sizeof(void*) ? 0 : 1;
}
