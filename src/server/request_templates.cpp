#include "tavroserver.h"

// The element names differ between requests (DeviceId and DeviceID, EmailID, LastSynDateTime)
// because the service spells them so.

const char* const TavroServer::registerDeviceRequest =
    "<DeviceRequest xmlns=\"http://www.tavro.example/deviceAPI\">\n"
    "  <DeviceId>%s</DeviceId>\n"
    "  <DeviceType>%s</DeviceType>\n"
    "  <ServiceConsumerID>%s</ServiceConsumerID>\n"
    "  <ServiceConsumerPassword>%s</ServiceConsumerPassword>\n"
    "  <ShopID>%s</ShopID>\n"
    "</DeviceRequest>";

const char* const TavroServer::createAccountRequest =
    "<RegisterUserRequest xmlns=\"http://www.tavro.example/deviceAPI\">\n"
    "  <Email>%s</Email>\n"
    "  <FirstName>%s</FirstName>\n"
    "  <LastName>%s</LastName>\n"
    "  <Password>%s</Password>\n"
    "  <Token>%s</Token>\n"
    "</RegisterUserRequest>";

const char* const TavroServer::loginUserRequest =
    "<LoginRequest xmlns=\"http://www.tavro.example/deviceAPI\">\n"
    "  <EmailID>%s</EmailID>\n"
    "  <Password>%s</Password>\n"
    "  <DeviceID>%s</DeviceID>\n"
    "  <Token>%s</Token>\n"
    "</LoginRequest>";

const char* const TavroServer::forgetPasswordRequest =
    "<ForgetPasswordRequest xmlns=\"http://www.tavro.example/deviceAPI\">\n"
    "  <EmailID>%s</EmailID>\n"
    "  <Token>%s</Token>\n"
    "</ForgetPasswordRequest>";

const char* const TavroServer::syncWithCloudRequest =
    "<SyncRequest xmlns=\"http://www.tavro.example/deviceAPI\">\n"
    "\t<SessionID>%s</SessionID>\n"
    "\t<Token>%s</Token>\n"
    "\t<LastSynDateTime>%s</LastSynDateTime>\n"
    "</SyncRequest>";

const char* const TavroServer::getShopUrlRequest =
    "<ShopInfoRequest xmlns=\"http://www.tavro.example/deviceAPI\">\n"
    "\t<DeviceId>%s</DeviceId>\n"
    "\t<DeviceType>%s</DeviceType>\n"
    "\t<ServiceConsumerID>%s</ServiceConsumerID>\n"
    "\t<ServiceConsumerPassword>%s</ServiceConsumerPassword>\n"
    "</ShopInfoRequest>";
