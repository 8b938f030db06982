#include "books/book_details.h"

#include <algorithm>
#include <iterator>

namespace tavro::service {

void setIsbn(BookDetails& details, const std::string& text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
                 [](char character) { return character != '-' && character != ' '; });
    const std::size_t number = std::min(digits.find_first_not_of("0123456789"), digits.size());
    if (digits.size() == 13 && number == 13)
        details.isbn13 = digits;
    else if (digits.size() == 10 && (number == 10 || (number == 9 && digits.back() == 'X')))
        details.isbn = digits;
}

}  // namespace tavro::service
