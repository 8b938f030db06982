#include "transport/multipart_form.h"

// libcurl deprecates its form calls in favour of its MIME calls, which older devices do not have.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace folium::tavro {

MultipartForm::MultipartForm(const CurlManager::FormFields& fields) {
    for (const auto& [name, value] : fields)
        curl_formadd(&first_, &last_, CURLFORM_COPYNAME, name.c_str(), CURLFORM_COPYCONTENTS,
                     value.c_str(), CURLFORM_END);
}

MultipartForm::~MultipartForm() {
    curl_formfree(first_);
}

void MultipartForm::addFile(const std::string& path) {
    curl_formadd(&first_, &last_, CURLFORM_COPYNAME, "file", CURLFORM_FILE, path.c_str(),
                 CURLFORM_CONTENTTYPE, "text/plain", CURLFORM_END);
}

CURLcode MultipartForm::attachTo(CURL* curl) const {
    return curl_easy_setopt(curl, CURLOPT_HTTPPOST, first_);
}

}  // namespace folium::tavro

#pragma GCC diagnostic pop
