// The same start without the library: libcurl and Expat alone.

#include <curl/curl.h>
#include <expat.h>

int main() {
    if (curl_global_init(CURL_GLOBAL_ALL) != CURLE_OK)
        return 1;
    CURL* const curl = curl_easy_init();
    XML_Parser parser = XML_ParserCreate("utf-8");
    const bool made = curl != nullptr && parser != nullptr;
    XML_ParserFree(parser);
    curl_easy_cleanup(curl);
    curl_global_cleanup();
    return made ? 0 : 1;
}
