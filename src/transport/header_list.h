#pragma once

#include <curl/curl.h>

#include <memory>

namespace folium::tavro {

/// Frees a libcurl list.
struct HeaderListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

/// Owns a list of request headers.
using HeaderList = std::unique_ptr<curl_slist, HeaderListDeleter>;

/// Adds the line `header` at the end of `list`; the list stays as it was if memory runs out.
inline void append(HeaderList& list, const char* header) {
    if (curl_slist* longer = curl_slist_append(list.get(), header)) {
        static_cast<void>(list.release());
        list.reset(longer);
    }
}

}  // namespace folium::tavro
