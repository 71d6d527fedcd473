#include "host/media/picture_metadata.h"

#include <algorithm>
#include <exiv2/exiv2.hpp>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string_view>

namespace Nifikral {
namespace {

void PrepareOnce() {
    static std::once_flag once;
    static std::recursive_mutex mutex;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::enableBMFF(true);
        Exiv2::XmpParser::initialize(
            [](void* lock, bool taken) {
                auto& held = *static_cast<std::recursive_mutex*>(lock);
                taken ? held.lock() : held.unlock();
            },
            &mutex);
    });
}

using ImagePtr = std::unique_ptr<Exiv2::Image>;

// What the first directory says of the photograph, and not of how its file is laid out.
constexpr std::string_view descriptive[] = {
    "Artist",   "Copyright", "DateTime",    "DateTimeOriginal", "DocumentName",  "HostComputer",   "ImageDescription",
    "Make",     "Model",     "Orientation", "Rating",           "RatingPercent", "ResolutionUnit", "Software",
    "XPAuthor", "XPComment", "XPKeywords",  "XPSubject",        "XPTitle",       "XResolution",    "YResolution"};

bool DescribesLayout(const Exiv2::Exifdatum& entry) {
    const std::string group = entry.groupName();
    if (group == "Image")
        return std::find(std::begin(descriptive), std::end(descriptive), entry.tagName()) == std::end(descriptive);
    return group == "Thumbnail" || group.starts_with("SubImage") || group.starts_with("Image");
}

Exiv2::ExifData ExifFor(const Exiv2::Image& from, const Exiv2::Image& to, bool upright) {
    Exiv2::ExifData exif = from.exifData();
    for (auto entry = exif.begin(); entry != exif.end();)
        entry = DescribesLayout(*entry) ? exif.erase(entry) : std::next(entry);
    const auto correct = [&](const char* key, auto value) {
        if (exif.findKey(Exiv2::ExifKey(key)) != exif.end()) exif[key] = value;
    };
    if (upright) correct("Exif.Image.Orientation", std::uint16_t(1));
    correct("Exif.Photo.PixelXDimension", std::uint32_t(to.pixelWidth()));
    correct("Exif.Photo.PixelYDimension", std::uint32_t(to.pixelHeight()));
    return exif;
}

Exiv2::XmpData XmpFor(const Exiv2::Image& from, const Exiv2::Image& to, bool upright) {
    Exiv2::XmpData xmp = from.xmpData();
    for (auto entry = xmp.begin(); entry != xmp.end();)
        entry = entry->key().starts_with("Xmp.xmp.Thumbnails") ? xmp.erase(entry) : std::next(entry);
    const auto correct = [&](const char* key, int value) {
        if (const auto entry = xmp.findKey(Exiv2::XmpKey(key)); entry != xmp.end())
            entry->setValue(std::to_string(value));
    };
    if (upright) correct("Xmp.tiff.Orientation", 1);
    correct("Xmp.tiff.ImageWidth", to.pixelWidth());
    correct("Xmp.tiff.ImageLength", to.pixelHeight());
    correct("Xmp.exif.PixelXDimension", to.pixelWidth());
    correct("Xmp.exif.PixelYDimension", to.pixelHeight());
    return xmp;
}

// A profile of greys or of inks does not fit the colours that they have become.
bool IsRgbProfile(const Exiv2::DataBuf& profile) {
    constexpr long place = 16;
    return profile.size_ >= place + 4 &&
           std::string_view(reinterpret_cast<const char*>(profile.pData_) + place, 4) == "RGB ";
}

std::string Bytes(Exiv2::Image& image) {
    Exiv2::BasicIo& io = image.io();
    if (io.open() != 0) throw Exiv2::Error(Exiv2::kerDataSourceOpenFailed);
    const Exiv2::DataBuf data = io.read(long(io.size()));
    std::string bytes(reinterpret_cast<const char*>(data.pData_), std::size_t(data.size_));
    // In a WebP file the library gives the profile's chunk the name of the one before it.
    constexpr std::size_t second = 30;
    if (bytes.substr(8, 8) == "WEBPVP8X" && bytes.substr(second, 4) == "VP8X") bytes.replace(second, 4, "ICCP");
    return bytes;
}

// The text of the first of these keys that has one.
template <class Key, class Data>
void TakeFirst(std::string& text, const Data& data, std::initializer_list<const char*> keys) {
    for (const char* const key : keys) {
        if (!text.empty()) return;
        const auto entry = data.findKey(Key(key));
        if (entry == data.end()) continue;
        text = entry->toString();
        // Texts for several languages begin with the language.
        if (text.starts_with("lang=\"")) text.erase(0, text.find("\" ") + 2);
        text.erase(std::find(text.begin(), text.end(), '\0'), text.end());
        text.erase(text.find_last_not_of(" \t\r\n") + 1);
    }
}

// "2026:07:14 15:02:11" and "2026-07-14T15:02:11+02:00" as "2026-07-14 15:02:11"; "" for what is no date.
std::string PlainDate(std::string date) {
    constexpr std::string_view form = "0000-00-00 00:00:00";
    date.resize(std::min(date.size(), form.size()));
    for (std::size_t i = 0; i < date.size(); ++i) {
        if (form[i] != '0') date[i] = form[i];
        if (form[i] == '0' && (date[i] < '0' || date[i] > '9')) return {};
    }
    constexpr std::size_t day = 10;
    return date.size() < day || date.starts_with("0000") ? "" : date;
}

}  // namespace

PhotographFacts ReadPhotograph(const std::string& file) {
    PrepareOnce();
    PhotographFacts facts;
    try {
        const ImagePtr image = Exiv2::ImageFactory::open(file);
        image->readMetadata();
        const Exiv2::ExifData& exif = image->exifData();
        const Exiv2::IptcData& iptc = image->iptcData();
        const Exiv2::XmpData& xmp = image->xmpData();
        TakeFirst<Exiv2::ExifKey>(
            facts.date, exif, {"Exif.Photo.DateTimeOriginal", "Exif.Photo.DateTimeDigitized", "Exif.Image.DateTime"});
        TakeFirst<Exiv2::XmpKey>(facts.date, xmp, {"Xmp.exif.DateTimeOriginal", "Xmp.photoshop.DateCreated"});
        facts.date = PlainDate(facts.date);
        TakeFirst<Exiv2::ExifKey>(facts.description, exif, {"Exif.Image.ImageDescription"});
        TakeFirst<Exiv2::XmpKey>(facts.description, xmp, {"Xmp.dc.description"});
        TakeFirst<Exiv2::IptcKey>(facts.description, iptc, {"Iptc.Application2.Caption"});
        TakeFirst<Exiv2::XmpKey>(facts.place, xmp, {"Xmp.iptc.Location", "Xmp.photoshop.City"});
        TakeFirst<Exiv2::IptcKey>(facts.place, iptc, {"Iptc.Application2.SubLocation", "Iptc.Application2.City"});
    } catch (const Exiv2::Error&) {
    }
    return facts;
}

std::string CopyMetadata(const std::string& from, std::string& picture) {
    PrepareOnce();
    ImagePtr source;
    try {
        source.reset(Exiv2::ImageFactory::open(from).release());
        source->readMetadata();
    } catch (const Exiv2::Error&) {
        return {};
    }
    struct Part {
        const char* name;
        bool has, kept;
        Exiv2::MetadataId id;
    };
    Part parts[] = {{"EXIF", !source->exifData().empty(), false, Exiv2::mdExif},
                    {"IPTC", !source->iptcData().empty(), false, Exiv2::mdIptc},
                    {"XMP", !source->xmpData().empty(), false, Exiv2::mdXmp},
                    {"its colour profile", bool(source->iccProfileDefined()), false, Exiv2::mdIccProfile}};
    if (std::none_of(std::begin(parts), std::end(parts), [](const Part& part) { return part.has; })) return {};
    try {
        const auto* const coded = reinterpret_cast<const Exiv2::byte*>(picture.data());
        const ImagePtr target(Exiv2::ImageFactory::open(coded, long(picture.size())).release());
        target->readMetadata();
        // FFmpeg turns upright what these say; of other formats it takes no notice of that.
        const std::string type = source->mimeType();
        const bool upright = type != "image/png" && type != "image/tiff" && type != "image/webp";
        for (Part& part : parts) part.kept = part.has && (target->checkMode(part.id) & Exiv2::amWrite);
        if (parts[0].kept) target->setExifData(ExifFor(*source, *target, upright));
        if (parts[1].kept) target->setIptcData(source->iptcData());
        if (parts[2].kept) target->setXmpData(XmpFor(*source, *target, upright));
        if (Exiv2::DataBuf& profile = *source->iccProfile(); parts[3].has && parts[0].kept && IsRgbProfile(profile)) {
            Exiv2::DataBuf copy(profile.pData_, profile.size_);
            target->setIccProfile(copy);
            parts[3].kept = true;
        }
        // FFmpeg hands profiles on without a look at what they are for.
        if (!parts[3].kept) target->clearIccProfile();
        target->writeMetadata();
        picture = Bytes(*target);
    } catch (const Exiv2::Error&) {
        for (Part& part : parts) part.kept = false;
    }
    std::string left;
    for (const Part& part : parts)
        if (part.has && !part.kept) left += (left.empty() ? "" : ", ") + std::string(part.name);
    return left;
}

}  // namespace Nifikral
