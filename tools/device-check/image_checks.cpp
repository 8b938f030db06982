#include <lectern.h>

#include <cstdlib>

#include "device-check/files.h"
#include "device-check/pictures.h"
#include "device-check/shared_library.h"

namespace tavro::device_check {

namespace {

/// Whether `load` has a bitmap for the file `path`, which is freed as the browser frees it.
template <typename Load>
bool loads(Load load, const std::string& path) {
    void* const bitmap = load(path.c_str());
    std::free(bitmap);
    return bitmap != nullptr;
}

/// Loads `picture`, and what is no picture and no file.
template <typename Load>
std::string checkLoader(const Context& context, const std::string& picture, Load load) {
    expect(loads(load, writeFile(context.folder, "picture", picture)), "does not load a small one");
    expect(!loads(load, writeFile(context.folder, "text", "no picture")), "takes a text for one");
    expect(!loads(load, context.folder + "/none"), "loads a file that is not there");
    return "loads one of " + std::to_string(picture.size()) + " bytes, refuses what is none";
}

// Brightness, contrast and the rest as the library passes them for covers.

std::string checkJpeg(const Context& context) {
    const auto call = lectern<decltype(LoadJPEG)>("LoadJPEG");
    return checkLoader(context, pictures::jpeg(),
                       [=](const char* path) { return call(path, 8, 8, 96, 105, 1); });
}

std::string checkPng(const Context& context) {
    const auto call = lectern<decltype(LoadPNGStretch)>("LoadPNGStretch");
    return checkLoader(context, pictures::png(),
                       [=](const char* path) { return call(path, 8, 8, 1, 1); });
}

std::string checkBmp(const Context& context) {
    return checkLoader(context, pictures::bmp(), lectern<decltype(LoadBitmap)>("LoadBitmap"));
}

}  // namespace

std::vector<Check> imageChecks() {
    return {{"LoadJPEG", "the browser shows no JPEG covers", "", checkJpeg},
            {"LoadPNGStretch", "the browser shows no PNG covers", "", checkPng},
            {"LoadBitmap", "the browser shows no BMP covers", "", checkBmp}};
}

}  // namespace tavro::device_check
