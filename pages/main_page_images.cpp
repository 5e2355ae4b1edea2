#include "pages/main_page_images.h"

#include <algorithm>
#include <cstdint>

#include "framework/drawing/canvas.h"
#include "pages/image_ids.h"

namespace {

struct ImageResource {
    std::uintptr_t id;
    int fromPng;
};

// In the order of MainPageImage, which is the order of loading.
constexpr std::array<ImageResource, static_cast<std::size_t>(MainPageImage::Count)> kImageResources{{
    {IDB_BACKGROUND, 0},
    {IDB_MAIL, 0},
    {IDB_PICTURE, 0},
    {IDB_SHADE, 0},
    {IDP_OVERLAY, 1},
    {IDP_MICROPHONE_ON, 1},
    {IDP_MICROPHONE_MUTED, 1},
    {IDP_SPEAKER_ON, 1},
    {IDP_SPEAKER_MUTED, 1},
    {IDP_BATTERY_FULL, 1},
    {IDP_BATTERY_MEDIUM, 1},
    {IDP_BATTERY_LOW, 1},
    {IDP_BATTERY_EMPTY, 1},
}};

}  // namespace

MainPageImages loadMainPageImages(Panelix::Canvas& canvas) {
    MainPageImages images;
    std::ranges::transform(kImageResources, images.bitmaps.begin(), [&canvas](const ImageResource& resource) {
        return canvas.getImage(resource.id, resource.fromPng);
    });
    return images;
}
