#include "account/account_requests.h"
#include "tavroctl/command_line.h"
#include "tavroctl/service_url.h"
#include "tavroctl/waiting_note.h"

namespace tavro::tools {

namespace {

void showShop(const Account& account, const Output& output) {
    const Shop shop = waitingFor(serviceUrl(), output, [&] { return askForShop(account); });
    output.summary({{"name", shop.name}, {"url", shop.url}, {"terms", shop.terms}});
}

}  // namespace

void addShop(CommandLine& commandLine) {
    commandLine.add("shop", "Show the shop's details", "shop", showShop);
}

}  // namespace tavro::tools
