// The three image loaders of the platform's stand-in.
#include <gmock/gmock.h>
#include <png.h>
#include <turbojpeg.h>

#include <cerrno>
#include <functional>
#include <memory>

#include "lectern_host.h"
#include "support/temporary_folder.h"

using testing::DoubleNear;
using testing::Pointwise;
using namespace std::string_literals;

namespace {

/// What a loader returned: width, height and the pixels; empty for null.
using Picture = std::vector<int>;

Picture taken(LecternBitmap* bitmap) {
    const std::unique_ptr<LecternBitmap, decltype(&std::free)> owner(bitmap, std::free);
    if (bitmap == nullptr)
        return {};
    EXPECT_EQ(bitmap->depth, 8);
    EXPECT_EQ(bitmap->row_bytes, bitmap->width);
    Picture picture{bitmap->width, bitmap->height};
    const unsigned char* const first = LecternBitmapPixels(bitmap);
    picture.insert(picture.end(), first, first + long{bitmap->width} * bitmap->height);
    return picture;
}

class Images : public testing::Test {
protected:
    const char* file(const std::string& content) const {
        writeFile(path, content);
        return path.c_str();
    }
    Picture jpeg(const std::string& content, int width, int height, int proportional = 1,
                 int brightness = 100, int contrast = 100) const {
        return taken(LoadJPEG(file(content), width, height, brightness, contrast, proportional));
    }
    Picture png(const std::string& content, int width, int height) const {
        return taken(LoadPNGStretch(file(content), width, height, 1, 1));
    }
    Picture bmp(const std::string& content) const { return taken(LoadBitmap(file(content))); }

    const TemporaryFolder folder;
    const std::string path = folder / "image";
};

std::string jpegFile(int width, int height, const std::string& pixels) {
    const std::unique_ptr<void, decltype(&tjDestroy)> encoder(tjInitCompress(), tjDestroy);
    std::string file(tjBufSize(width, height, TJSAMP_GRAY), '\0');
    auto* bytes = reinterpret_cast<unsigned char*>(file.data());
    unsigned long size = file.size();
    tjCompress2(encoder.get(), reinterpret_cast<const unsigned char*>(pixels.data()), width, 0,
                height, TJPF_GRAY, &bytes, &size, TJSAMP_GRAY, 95, TJFLAG_NOREALLOC);
    return file.substr(0, size);
}

std::string pngFile(unsigned width, unsigned height, unsigned format, const std::string& pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = format;
    std::string file(pixels.size() + 1000, '\0');
    png_alloc_size_t size = file.size();
    png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr);
    return file.substr(0, size);
}

std::string little(std::size_t size, std::int64_t number) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(number >> (8 * i));
    return bytes;
}

/// 3 x 2 pixels; `rows` in the order of the file, with padding.
std::string bmpFile(int depth, const std::string& rows, const std::string& palette = "",
                    int height = 2, int compression = 0) {
    const std::size_t colours = depth == 1 ? 0 : palette.size() / 4;
    return "BM" + little(8, 0) + little(4, 54 + std::int64_t(palette.size())) + little(4, 40) +
           little(4, 3) + little(4, height) + little(2, 1) + little(2, depth) +
           little(4, compression) + std::string(12, '\0') + little(4, std::int64_t(colours)) +
           little(4, 0) + palette + rows;
}

const std::string four_greys("\0\0\0\0\x32\x32\x32\0\x64\x64\x64\0\xff\xff\xff\0", 16);
const std::string four_bit = bmpFile(4, "\x32\x10\0\0\x12\x30\0\0"s, four_greys);

/// 64 x 32 pixels: 20 and 90 in the upper quarters, 160 and 240 in the lower ones.
std::string quarters() {
    std::string pixels;
    for (int i = 0; i < 64 * 32; ++i)
        pixels += "\x14\x5a\xa0\xf0"[2 * (i / 64 / 16) + i % 64 / 32];
    return pixels;
}

}  // namespace

TEST_F(Images, JpegFitsTheFrameUprightInTheBrightnessAndContrastAskedFor) {
    const std::string content = jpegFile(64, 32, quarters());
    const struct {
        int frameWidth, frameHeight, proportional, width, height;
        int brightness = 100;
        int contrast = 100;
        std::vector<int> greys = {20, 90, 160, 240};  // in the middle of the quarters
    } cases[] = {{32, 32, 1, 32, 16},
                 {99, 5, 1, 10, 5},
                 {8, 32, 0, 8, 32},
                 {200, 150, 1, 200, 100},
                 {64, 32, 1, 64, 32, 200, 100, {40, 180, 255, 255}},
                 {64, 32, 1, 64, 32, 100, 50, {74, 109, 144, 184}},
                 {64, 32, 1, 64, 32, 96, 105, {14, 85, 155, 236}},
                 {64, 32, 1, 64, 32, -5, 100, {0, 0, 0, 0}}};
    for (const auto& c : cases) {
        const Picture picture =
            jpeg(content, c.frameWidth, c.frameHeight, c.proportional, c.brightness, c.contrast);
        ASSERT_EQ(picture.size(), 2U + static_cast<unsigned>(c.width * c.height));
        EXPECT_EQ(picture[0], c.width);
        std::vector<int> greys;
        for (const long y : {c.height / 4, c.height * 3 / 4})
            for (const long x : {c.width / 4, c.width * 3 / 4})
                greys.push_back(picture[static_cast<std::size_t>(2 + y * c.width + x)]);
        EXPECT_THAT(greys, Pointwise(DoubleNear(3), c.greys));
    }
    EXPECT_EQ(jpeg(content, 1, 1).size(), 3U) << "no side may vanish";
}

TEST_F(Images, PngIsStretchedToMeansAndTransparencyShowsWhite) {
    const std::string colours =
        pngFile(2, 2, PNG_FORMAT_RGBA, "\xff\0\0\xff\0\0\0\x80\0\0\0\0\x0a\x0a\x0a\xff"s);
    EXPECT_EQ(png(colours, 4, 2), (Picture{4, 2, 76, 76, 127, 127, 255, 255, 10, 10}));
    EXPECT_EQ(png(colours, 1, 3), (Picture{1, 3, 102, 117, 133}));
    EXPECT_EQ(png(pngFile(3, 1, PNG_FORMAT_GRAY, "\0\x5a\xf0"s), 2, 1), (Picture{2, 1, 30, 190}));
}

TEST_F(Images, BitmapsOfEveryDepthAreUprightInTheirOwnSize) {
    const std::string eight = "\3\2\1\0\1\2\3\0"s;
    const std::string colours24 = "ddd\xff\xff\xff\0\0\0\0\0\0\0\0\xff\0\xff\0\xff\0\0\0\0\0"s;
    const std::string colours32 = "ddd\0\xff\xff\xff\0\0\0\0\0\0\0\xff\0\0\xff\0\0\xff\0\0\0"s;
    const std::string masks = "\0\0\xff\0\0\xff\0\0\xff\0\0\0"s;
    const Picture colours{3, 2, 76, 150, 29, 100, 255, 0};
    const std::pair<std::string, Picture> cases[] = {
        {bmpFile(1, "\xa0\0\0\0\x40\0\0\0"s, four_greys.substr(0, 8)), {3, 2, 0, 50, 0, 50, 0, 50}},
        {four_bit, {3, 2, 50, 100, 255, 255, 100, 50}},
        {bmpFile(8, eight, four_greys), {3, 2, 50, 100, 255, 255, 100, 50}},
        {bmpFile(8, eight, four_greys, -2), {3, 2, 255, 100, 50, 50, 100, 255}},
        {bmpFile(24, colours24), colours},
        {bmpFile(32, colours32), colours},
        {bmpFile(32, colours32, masks, 2, 3), colours}};
    for (const auto& [content, picture] : cases)
        EXPECT_EQ(bmp(content), picture);
}

// Covers come from the network: a download may stop anywhere, and a few kilobytes may hold a
// picture that takes gigabytes.
TEST_F(Images, CutAndOversizedFilesGiveNothing) {
    const auto asJpeg = [this](const std::string& content) { return jpeg(content, 64, 32); };
    const auto asPng = [this](const std::string& content) { return png(content, 64, 32); };
    const auto asBmp = [this](const std::string& content) { return bmp(content); };
    const std::tuple<std::function<Picture(std::string)>, std::string, std::size_t> cases[] = {
        {asJpeg, jpegFile(64, 32, quarters()), 0},
        {asPng, pngFile(64, 32, PNG_FORMAT_GRAY, quarters()), 12},  // the last part holds nothing
        {asBmp, four_bit, 0}};
    for (const auto& [load, whole, spare] : cases) {
        const Picture picture = load(whole);
        for (std::size_t i = 0; i < whole.size(); ++i)
            EXPECT_EQ(load(whole.substr(0, i)), i + spare < whole.size() ? Picture{} : picture);
    }
    const std::string pixels(std::size_t{6000} * 6000, '\0');
    for (const auto& [width, height] : {std::pair(65536U, 1U), {1U, 65536U}, {6000U, 6000U}})
        EXPECT_EQ(asPng(pngFile(width, height, PNG_FORMAT_GRAY, pixels)), Picture{}) << width;
    EXPECT_EQ(asJpeg(jpegFile(6000, 6000, pixels)), Picture{});
}

TEST_F(Images, HostileBitmapHeadersAreRefused) {
    const std::tuple<std::size_t, std::size_t, std::vector<std::int64_t>> changes[] = {
        {10, 4, {0, 0xffffffff}},      // place of the pixels
        {14, 4, {0, 0xffffffff}},      // size of the header
        {18, 4, {0, -3, 0x7fffffff}},  // width
        {22, 4, {0, 0x80000000, 3}},   // height
        {28, 2, {16, 0}},              // depth
        {30, 4, {1, 3}},               // compression
        {46, 4, {3, 0, 0x40000000}}};  // colours: too few for the pixels, sixteen, too many
    for (const auto& [place, size, numbers] : changes)
        for (const std::int64_t number : numbers)
            EXPECT_EQ(bmp(std::string(four_bit).replace(place, size, little(size, number))),
                      Picture{})
                << number << " at " << place;
}

TEST_F(Images, WrongFilesAndCallsTellWhy) {
    const auto reason = [](LecternBitmap* bitmap) { return taken(bitmap).empty() ? errno : 0; };
    EXPECT_EQ(reason(LoadBitmap(file("no image"))), EBADMSG);
    EXPECT_EQ(reason(LoadBitmap((folder / "none").c_str())), ENOENT);
    EXPECT_EQ(reason(LoadBitmap((folder / "").c_str())), EISDIR);
    for (const int side : {0, -1, 8193}) {
        EXPECT_EQ(reason(LoadJPEG(path.c_str(), side, 9, 100, 100, 1)), EINVAL) << side;
        EXPECT_EQ(reason(LoadPNGStretch(path.c_str(), 9, side, 1, 1)), EINVAL) << side;
    }
}
