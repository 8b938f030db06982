// A program's start: it loads the library and opens the first session of the account in the folder
// that its argument names.

#include "tavro.h"

int main(int count, char** values) {
    Tavro session;
    return count == 2 && session.init(values[1]) ? 0 : 1;
}
