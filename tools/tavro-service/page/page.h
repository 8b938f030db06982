#pragma once

#include <string>
#include <string_view>

namespace tavro::service {

/// The page for people, which is all of page.html: its style and its script bear `nonce`, by which
/// a browser knows them from anything that might get into the page later.
std::string page(std::string_view nonce);

/// The picture that browsers show beside the page's title.
extern const std::string_view page_icon;

}  // namespace tavro::service
