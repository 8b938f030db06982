#include <gmock/gmock.h>
#include <png.h>
#include <turbojpeg.h>

#include <cerrno>
#include <functional>
#include <memory>

#include "lectern_host.h"
#include "support/temporary_folder.h"

using testing::DoubleNear;
using testing::ElementsAreArray;
using testing::Pointwise;
using namespace std::string_literals;

namespace {

/// What a loader returned, copied; width 0 for null.
struct Picture {
    long width = 0;
    long height = 0;
    std::vector<int> pixels = {};

    bool operator==(const Picture& other) const {
        return width == other.width && height == other.height && pixels == other.pixels;
    }
};

class Images : public testing::Test {
protected:
    const char* file(const std::string& content) const {
        writeFile(path_, content);
        return path_.c_str();
    }
    static Picture taken(LecternBitmap* bitmap) {
        const std::unique_ptr<LecternBitmap, decltype(&std::free)> owner(bitmap, std::free);
        if (bitmap == nullptr)
            return {};
        EXPECT_EQ(bitmap->depth, 8);
        EXPECT_EQ(bitmap->row_bytes, bitmap->width);
        const unsigned char* const first = LecternBitmapPixels(bitmap);
        return {bitmap->width, bitmap->height, {first, first + bitmap->width * bitmap->height}};
    }
    Picture jpeg(const std::string& content, int width, int height, int proportional = 1,
                 int brightness = 100, int contrast = 100) const {
        return taken(LoadJPEG(file(content), width, height, brightness, contrast, proportional));
    }
    Picture png(const std::string& content, int width, int height) const {
        return taken(LoadPNGStretch(file(content), width, height, 1, 1));
    }
    Picture bmp(const std::string& content) const { return taken(LoadBitmap(file(content))); }

    const TemporaryFolder folder_;
    const std::string path_ = folder_ / "image";
};

std::string jpegFile(int width, int height, const std::string& grey, int flags = 0) {
    const std::unique_ptr<void, decltype(&tjDestroy)> encoder(tjInitCompress(), tjDestroy);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    std::string colours;  // grey as a colour picture, which is what covers are
    for (const char value : grey)
        colours.append(3, value);
    EXPECT_EQ(tjCompress2(encoder.get(), reinterpret_cast<const unsigned char*>(colours.data()),
                          width, 0, height, TJPF_RGB, &bytes, &size, TJSAMP_420, 95, flags),
              0);
    const std::unique_ptr<unsigned char, decltype(&tjFree)> owner(bytes, tjFree);
    return {reinterpret_cast<const char*>(bytes), size};
}

std::string pngFile(unsigned width, unsigned height, unsigned format, const std::string& pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = format;
    std::string file(pixels.size() + 1000, '\0');
    png_alloc_size_t size = file.size();
    EXPECT_NE(png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr),
              0);
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
                    int height = 2, int compression = 0, int colours = 0) {
    const auto offset = static_cast<std::int64_t>(54 + palette.size());
    return "BM" + little(8, 0) + little(4, offset) + little(4, 40) + little(4, 3) +
           little(4, height) + little(2, 1) + little(2, depth) + little(4, compression) +
           std::string(12, '\0') + little(4, colours) + little(4, 0) + palette + rows;
}

/// 64 x 32 pixels: 20 and 90 in the upper quarters, 160 and 240 in the lower ones.
std::string quarters() {
    std::string pixels;
    for (int i = 0; i < 64 * 32; ++i)
        pixels += "\x14\x5a\xa0\xf0"[2 * (i / 64 / 16) + i % 64 / 32];
    return pixels;
}

/// Grey in the middle of the four quarters of `picture`.
std::vector<int> middles(const Picture& picture) {
    std::vector<int> result;
    for (const long y : {picture.height / 4, picture.height * 3 / 4}) {
        for (const long x : {picture.width / 4, picture.width * 3 / 4})
            result.push_back(picture.pixels.at(static_cast<std::size_t>(y * picture.width + x)));
    }
    return result;
}

const std::string four_greys("\0\0\0\0\x32\x32\x32\0\x64\x64\x64\0\xff\xff\xff\0", 16);
const std::string four_bit = bmpFile(4, "\x32\x10\0\0\x12\x30\0\0"s, four_greys, 2, 0, 4);

}  // namespace

TEST_F(Images, JpegFitsTheFrameUprightInTheBrightnessAndContrastAskedFor) {
    struct Case {
        int frameWidth, frameHeight, proportional, width, height;
        int brightness = 100;
        int contrast = 100;
        std::vector<int> greys = {20, 90, 160, 240};
    };
    for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
        const std::string content = jpegFile(64, 32, quarters(), flags);
        for (const Case& c : {Case{32, 32, 1, 32, 16},
                              {99, 5, 1, 10, 5},
                              {8, 32, 0, 8, 32},
                              {200, 150, 1, 200, 100},
                              {64, 32, 1, 64, 32, 50, 100, {10, 45, 80, 120}},
                              {64, 32, 1, 64, 32, 200, 100, {40, 180, 255, 255}},
                              {64, 32, 1, 64, 32, 100, 50, {74, 109, 144, 184}},
                              {64, 32, 1, 64, 32, 100, 200, {0, 52, 192, 255}},
                              {64, 32, 1, 64, 32, 96, 105, {14, 85, 155, 236}},
                              {64, 32, 1, 64, 32, -5, 100, {0, 0, 0, 0}}}) {
            const Picture picture = jpeg(content, c.frameWidth, c.frameHeight, c.proportional,
                                         c.brightness, c.contrast);
            EXPECT_EQ(picture.width, c.width);
            ASSERT_EQ(picture.height, c.height);
            EXPECT_THAT(middles(picture), Pointwise(DoubleNear(3), c.greys));
        }
        EXPECT_EQ(jpeg(content, 1, 1).height, 1) << "no side may vanish";
    }
}

TEST_F(Images, PngIsStretchedToMeansAndTransparencyShowsWhite) {
    const std::string colours =
        pngFile(2, 2, PNG_FORMAT_RGBA, "\xff\0\0\xff\0\0\0\x80\0\0\0\0\x0a\x0a\x0a\xff"s);
    const std::string row = pngFile(3, 1, PNG_FORMAT_GRAY, "\0\x5a\xf0"s);
    EXPECT_EQ(png(colours, 2, 2), (Picture{2, 2, {76, 127, 255, 10}}));
    EXPECT_EQ(png(colours, 4, 2), (Picture{4, 2, {76, 76, 127, 127, 255, 255, 10, 10}}));
    EXPECT_EQ(png(colours, 1, 3), (Picture{1, 3, {102, 117, 133}}));
    EXPECT_EQ(png(row, 2, 1), (Picture{2, 1, {30, 190}}));
}

TEST_F(Images, BitmapsOfEveryDepthAreUprightInTheirOwnSize) {
    const std::string colours24 =
        "\x64\x64\x64\xff\xff\xff\0\0\0\0\0\0"s
        "\0\0\xff\0\xff\0\xff\0\0\0\0\0"s;
    const std::string colours32 =
        "\x64\x64\x64\0\xff\xff\xff\0\0\0\0\0"s
        "\0\0\xff\0\0\xff\0\0\xff\0\0\0"s;
    const std::string masks = "\0\0\xff\0\0\xff\0\0\xff\0\0\0"s;
    const std::vector<int> colours = {76, 150, 29, 100, 255, 0};
    const std::vector<int> greys = {50, 100, 255, 255, 100, 50};
    const std::string eight = "\3\2\1\0\1\2\3\0"s;
    const std::pair<std::string, std::vector<int>> cases[] = {
        {bmpFile(1, "\xa0\0\0\0\x40\0\0\0"s, four_greys.substr(0, 8)), {0, 50, 0, 50, 0, 50}},
        {four_bit, greys},
        {bmpFile(8, eight, four_greys, 2, 0, 4), greys},
        {bmpFile(8, eight, four_greys, -2, 0, 4), {255, 100, 50, 50, 100, 255}},
        {bmpFile(24, colours24), colours},
        {bmpFile(32, colours32), colours},
        {bmpFile(32, colours32, masks, 2, 3), colours}};
    for (const auto& [content, pixels] : cases)
        EXPECT_EQ(bmp(content), (Picture{3, 2, pixels}));
}

// Covers come from the network, and a download may stop anywhere.
TEST_F(Images, CutAndDamagedFilesGiveNothingOrAWholePicture) {
    using Load = std::function<Picture(const std::string&)>;
    const Load asJpeg = [this](const std::string& content) { return jpeg(content, 64, 32); };
    const Load asPng = [this](const std::string& content) { return png(content, 64, 32); };
    const Load asBmp = [this](const std::string& content) { return bmp(content); };
    const std::string pngContent = pngFile(64, 32, PNG_FORMAT_GRAY, quarters());
    const std::string jpegContent = jpegFile(64, 32, quarters());
    const std::string progressive = jpegFile(64, 32, quarters(), TJFLAG_PROGRESSIVE);
    const std::tuple<Load, std::string, std::size_t> cases[] = {
        {asJpeg, jpegContent, jpegContent.size()},
        {asJpeg, progressive, progressive.size()},
        {asPng, pngContent, pngContent.find("IEND") - 4},
        {asBmp, four_bit, four_bit.size()}};
    for (const auto& [load, whole, needed] : cases) {
        const Picture picture = load(whole);
        ASSERT_GT(picture.width, 0);
        for (std::size_t i = 0; i < whole.size(); ++i) {
            EXPECT_EQ(load(whole.substr(0, i)), i < needed ? Picture{} : picture) << i;
            std::string damaged = whole;
            damaged[i] = static_cast<char>(damaged[i] ^ 0xff);
            const Picture other = load(damaged);
            EXPECT_EQ(other.pixels.size(), static_cast<std::size_t>(other.width * other.height));
        }
    }
}

TEST_F(Images, HostileBitmapHeadersAreRefused) {
    struct Change {
        std::size_t place, size;
        std::vector<std::int64_t> numbers;
    };
    for (const Change& change : {Change{10, 4, {0, 0x7fffffff, 0xffffffff}},  // of the pixels
                                 Change{14, 4, {0, 0x7fffffff, 0xffffffff}},  // size of the header
                                 Change{18, 4, {0, -3, 0x7fffffff}},          // width
                                 Change{22, 4, {0, 0x80000000, 3}},           // height
                                 Change{28, 2, {16, 2, 0}},                   // depth
                                 Change{30, 4, {1, 3}},                       // compression
                                 // Colours: too few for the pixels, sixteen, too many
                                 Change{46, 4, {3, 0, 0x40000000}}}) {
        for (const std::int64_t number : change.numbers) {
            std::string content = four_bit;
            content.replace(change.place, change.size, little(change.size, number));
            EXPECT_EQ(bmp(content), Picture{}) << number << " at " << change.place;
        }
    }
}

// A few kilobytes may hold a picture that takes gigabytes.
TEST_F(Images, OversizedPicturesAreRefusedThoughWhole) {
    const std::string line(65536, '\0');
    EXPECT_EQ(png(pngFile(65535, 1, PNG_FORMAT_GRAY, line), 1, 1).width, 1);
    EXPECT_EQ(png(pngFile(65536, 1, PNG_FORMAT_GRAY, line), 1, 1).width, 0);
    EXPECT_EQ(png(pngFile(1, 65536, PNG_FORMAT_GRAY, line), 1, 1).width, 0);
    const std::string pixels(std::size_t{6000} * 6000, '\0');
    EXPECT_EQ(png(pngFile(6000, 6000, PNG_FORMAT_GRAY, pixels), 1, 1).width, 0);
    EXPECT_EQ(jpeg(jpegFile(6000, 6000, pixels), 1, 1).width, 0);
}

TEST_F(Images, MislabelledFilesAndWrongCallsTellWhy) {
    const std::string contents[] = {jpegFile(64, 32, quarters()),
                                    pngFile(64, 32, PNG_FORMAT_GRAY, quarters()), four_bit, "",
                                    "no image"};
    for (std::size_t i = 0; i < std::size(contents); ++i) {
        const bool loaded[] = {jpeg(contents[i], 9, 9).width != 0,
                               png(contents[i], 9, 9).width != 0, bmp(contents[i]).width != 0};
        EXPECT_THAT(loaded, ElementsAreArray({i == 0, i == 1, i == 2})) << i;
    }
    const auto reason = [](const LecternBitmap* bitmap) { return bitmap == nullptr ? errno : 0; };
    EXPECT_EQ(reason(LoadBitmap(path_.c_str())), EBADMSG);
    EXPECT_EQ(reason(LoadBitmap(nullptr)), EINVAL);
    EXPECT_EQ(reason(LoadBitmap((folder_ / "none").c_str())), ENOENT);
    EXPECT_EQ(reason(LoadBitmap((folder_ / "").c_str())), EISDIR);
    for (const int side : {0, -1, 8193, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(reason(LoadJPEG(path_.c_str(), side, 9, 100, 100, 1)), EINVAL) << side;
        EXPECT_EQ(reason(LoadPNGStretch(path_.c_str(), 9, side, 1, 1)), EINVAL) << side;
    }
}
