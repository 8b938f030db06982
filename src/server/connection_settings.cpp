#include "platform/configuration.h"
#include "platform/device_paths.h"
#include "server/built_in_settings.h"
#include "server/connection_keys.h"
#include "tavroserver.h"

std::string TavroServer::defaultshopName = built_in::shop_name;
std::string TavroServer::baseApiUrl = built_in::base_api_url;
std::string TavroServer::uploadUrl = built_in::upload_url;
std::string TavroServer::downloadUrl = built_in::download_url;
std::string TavroServer::shopID = built_in::shop_id;
int TavroServer::apiPort = built_in::api_port;
int TavroServer::uploadPort = built_in::content_port;
int TavroServer::downloadPort = built_in::content_port;

namespace {

/// What the partners' devices differ in where their settings file is silent.
struct PartnerDefaults {
    int contentPort;
    const char* shopID;
};

constexpr int first_partner = 12;
constexpr PartnerDefaults first_partner_defaults = {1500, "5A1C7E20-9B3D-4F62-8E07-2C4D6B19A0F3"};
constexpr int second_partner = 16;
constexpr PartnerDefaults second_partner_defaults = {built_in::content_port, built_in::shop_id};

/// Defaults of this device's partner; null for every other device.
const PartnerDefaults* partnerDefaults() {
    if (GetCustomizedPartner() == first_partner)
        return &first_partner_defaults;
    if (GetCustomizedPartner() == second_partner)
        return &second_partner_defaults;
    return nullptr;
}

}  // namespace

void TavroServer::LoadServerConnectionData() {
    const PartnerDefaults* const defaults = partnerDefaults();
    if (defaults == nullptr)
        return;
    const auto config = platform::openConfiguration(device_paths::serverSettings());
    if (!config)
        return;
    LecternConfig* const file = config.get();
    defaultshopName = ReadString(file, connection_keys::shop_name, built_in::shop_name);
    baseApiUrl = ReadString(file, connection_keys::base_api_url, built_in::base_api_url);
    apiPort = ReadInt(file, connection_keys::api_port, built_in::api_port);
    uploadUrl = ReadString(file, connection_keys::upload_url, built_in::upload_url);
    uploadPort = ReadInt(file, connection_keys::upload_port, defaults->contentPort);
    downloadUrl = ReadString(file, connection_keys::download_url, built_in::download_url);
    downloadPort = ReadInt(file, connection_keys::download_port, defaults->contentPort);
    shopID = ReadString(file, connection_keys::shop_id, defaults->shopID);
}
