#include "tvutil2/platform/picture/icons.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/draw/blend.h"
#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/replaced_file.h"
#include "tvutil2/platform/picture/decoder.h"
#include "tvutil2/platform/picture/icon_file.h"
#include "tvutil2/platform/picture/system_icons.h"
#include "tvutil2/platform/resource/resource.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

using tvutil2::fail_with;
using tvutil2::make_handle;
using tvutil2::Surface;

namespace {

using Pixels = std::shared_ptr<const Surface>;
using Bytes = std::span<const std::byte>;

class IconObject : public tvutil2::HandleObject {
  public:
    static constexpr auto kHandleKind = tvutil2::HandleKind::icon;
    IconObject(Pixels pixels, SIZE size, bool is_shared)
        : HandleObject(kHandleKind),
          m_pixels(std::move(pixels)),
          m_size(size),
          m_is_shared(is_shared) {}
    [[nodiscard]] const Pixels& pixels() const { return m_pixels; }
    [[nodiscard]] SIZE size() const { return m_size; }
    [[nodiscard]] bool is_shared() const { return m_is_shared; }

  private:
    Pixels m_pixels;
    SIZE m_size;
    bool m_is_shared;
};

const char16_t* const kGroupIcon = MAKEINTRESOURCEW(14);
const char16_t* const kIcon = MAKEINTRESOURCEW(3);
const char16_t* const kBitmap = MAKEINTRESOURCEW(2);

constinit std::mutex g_shared_lock;
const tvutil2::ForkLock g_shared_fork_safe(g_shared_lock, tvutil2::ForkRank::caller);

struct SharedIcon {
    unsigned id;
    int size;
    const tvutil2::Theme* theme;
    bool operator==(const SharedIcon&) const = default;
};

int system_icon_size() {
    return tvutil2::scaled(32, tvutil2::system_dpi());
}

// The system's are asked for again and again, in one look or another, and nobody gives them back.
HICON shared_icon(unsigned id) {
    static auto* const shared = new std::vector<std::pair<SharedIcon, HICON>>;
    const SharedIcon wanted{id, system_icon_size(), &tvutil2::theme()};
    const std::lock_guard guard(g_shared_lock);
    const auto found = std::ranges::find(*shared, wanted, &std::pair<SharedIcon, HICON>::first);
    if (found != shared->end()) return found->second;
    const auto pixels = tvutil2::system_icon(id, wanted.size);
    if (!pixels) return nullptr;
    const SIZE size{wanted.size, wanted.size};
    auto* const icon = make_handle<HICON>(std::make_shared<IconObject>(pixels, size, true));
    if (icon != nullptr) shared->emplace_back(wanted, icon);
    return icon;
}

Bytes resource_bytes(HINSTANCE module, const char16_t* name, const char16_t* type) {
    auto* const found = FindResourceW(module, name, type);
    if (found == nullptr) return {};
    const auto* const data = LockResource(LoadResource(module, found));
    if (data == nullptr) return {};
    return {static_cast<const std::byte*>(data), SizeofResource(module, found)};
}

bool read_file(const char16_t* path, std::string& bytes) {
    const auto host = tvutil2::host_path_of(path);
    struct stat info {};
    return host && tvutil2::read_whole_file(*host, info, bytes);
}

// An image out of a file or a resource, and its best match for a size.
Pixels decode_icon(Bytes directory, int size, HINSTANCE module, bool is_resource) {
    const auto entry = tvutil2::best_icon(directory, is_resource, size);
    if (!entry) return fail_with(ERROR_INVALID_DATA), nullptr;
    const auto data = is_resource
                          ? resource_bytes(module, MAKEINTRESOURCEW(LOWORD(entry->place)), kIcon)
                          : tvutil2::icon_data(*entry, directory);
    if (data.empty()) return is_resource ? nullptr : (fail_with(ERROR_INVALID_DATA), nullptr);
    return tvutil2::decode_picture(tvutil2::single_icon(*entry, data));
}

HANDLE load_icon(HINSTANCE module, const char16_t* name, int width, int height, UINT flags) {
    const bool takes_own = (flags & LR_DEFAULTSIZE) == 0;
    if (width == 0 && !takes_own) width = system_icon_size();
    if (height == 0 && !takes_own) height = system_icon_size();
    const auto wanted = std::clamp(width == 0 ? system_icon_size() : width, 1, 1024);
    Pixels pixels;
    if ((flags & LR_LOADFROMFILE) != 0) {
        std::string file;
        if (!read_file(name, file)) return nullptr;
        pixels = decode_icon(std::as_bytes(std::span(file)), wanted, nullptr, false);
    } else if (module == nullptr && IS_INTRESOURCE(name)) {
        const auto id = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(name));
        pixels = tvutil2::system_icon(id, wanted);
    } else {
        const auto group = resource_bytes(module, name, kGroupIcon);
        if (group.empty()) return nullptr;
        pixels = decode_icon(group, wanted, module, true);
    }
    if (!pixels) return nullptr;
    const SIZE size{width == 0 ? pixels->width() : width, height == 0 ? pixels->height() : height};
    return make_handle<HANDLE>(std::make_shared<IconObject>(pixels, size, false));
}

// A bitmap's resource lacks the file's header, which says where the pixels begin.
std::vector<std::byte> bitmap_file(Bytes bitmap) {
    struct Start {
        DWORD size;
        LONG width, height;
        WORD planes, bits;
        DWORD compression, image_size;
        LONG across, down;
        DWORD colors;
    };
    Start start{};
    if (bitmap.size() < sizeof start) return {};
    std::memcpy(&start, bitmap.data(), sizeof start);
    const DWORD most = start.bits <= 8 ? DWORD{1} << start.bits : 0;
    const DWORD colors = start.colors != 0 ? std::min(start.colors, DWORD{256}) : most;
    const DWORD masks = start.compression == 3 && start.size == 40 ? 12 : 0;
    const DWORD place = 14 + start.size + colors * 4 + masks;
    const auto whole = static_cast<DWORD>(bitmap.size() + 14);
    std::vector<std::byte> file{std::byte{'B'}, std::byte{'M'}};
    for (const DWORD number : {whole, DWORD{0}, place}) {
        for (unsigned i = 0; i < 4; ++i) file.push_back(static_cast<std::byte>(number >> 8 * i));
    }
    file.insert(file.end(), bitmap.begin(), bitmap.end());
    return file;
}

HBITMAP load_bitmap(HINSTANCE module, const char16_t* name, UINT flags) {
    std::shared_ptr<Surface> pixels;
    if ((flags & LR_LOADFROMFILE) != 0) {
        pixels = tvutil2::load_picture_file(name);
    } else {
        const auto bitmap = resource_bytes(module, name, kBitmap);
        if (bitmap.empty()) return nullptr;
        pixels = tvutil2::decode_picture(bitmap_file(bitmap));
    }
    return pixels ? tvutil2::make_bitmap(std::move(pixels)) : nullptr;
}

// The pixels of a bitmap, to be kept.
std::shared_ptr<Surface> copy_of(const Surface& from) {
    auto copy = Surface::create(from.width(), from.height(), from.dpi());
    if (!copy) return nullptr;
    const std::lock_guard guard(from.lock());
    const auto size =
        static_cast<std::size_t>(from.width()) * static_cast<std::size_t>(from.height());
    std::copy_n(from.row(0), size, copy->row(0));
    return copy;
}

}  // namespace

HANDLE LoadImageW(HINSTANCE module, const char16_t* name, UINT type, int width, int height,
                  UINT flags) {
    if (type > IMAGE_ICON || width < 0 || height < 0 || name == nullptr) {
        return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
    if (type == IMAGE_BITMAP) return reinterpret_cast<HANDLE>(load_bitmap(module, name, flags));
    return load_icon(module, name, width, height, flags);
}

HICON LoadIconW(HINSTANCE module, const char16_t* name) {
    const auto id = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(name));
    if (module == nullptr && IS_INTRESOURCE(name) && id - 32512U < 5) return shared_icon(id);
    return reinterpret_cast<HICON>(LoadImageW(module, name, IMAGE_ICON, 0, 0, LR_DEFAULTSIZE));
}

HBITMAP LoadBitmapW(HINSTANCE module, const char16_t* name) {
    return reinterpret_cast<HBITMAP>(LoadImageW(module, name, IMAGE_BITMAP, 0, 0, 0));
}

HICON CopyIcon(HICON icon) {
    SIZE size{};
    auto pixels = tvutil2::icon_pixels(icon, size);
    return pixels ? tvutil2::make_icon(std::move(pixels), size) : nullptr;
}

BOOL DestroyIcon(HICON icon) {
    const auto object = tvutil2::object_of<IconObject>(icon);
    if (!object) return FALSE;
    if (object->is_shared()) return TRUE;
    return tvutil2::close_handle_of<IconObject>(icon) ? TRUE : FALSE;
}

BOOL GetIconInfo(HICON icon, ICONINFO* info) {
    SIZE size{};
    const auto pixels = tvutil2::icon_pixels(icon, size);
    if (!pixels) return FALSE;
    if (info == nullptr) return fail_with(ERROR_INVALID_PARAMETER);
    auto color = copy_of(*pixels);
    auto mask = copy_of(*pixels);
    if (!color || !mask) return FALSE;
    for (int y = 0; y < mask->height(); ++y) {
        auto* const row = mask->row(y);
        for (int x = 0; x < mask->width(); ++x) {
            row[x] = row[x] >> 24U == 0 ? 0xFFFFFFFF : Surface::kBlack;
        }
    }
    *info = {TRUE, 0, 0, tvutil2::make_bitmap(std::move(mask)),
             tvutil2::make_bitmap(std::move(color))};
    return TRUE;
}

HICON CreateIconIndirect(const ICONINFO* info) {
    if (info == nullptr) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    const auto color = tvutil2::graphics_object<tvutil2::BitmapObject>(info->hbmColor);
    const auto mask = tvutil2::graphics_object<tvutil2::BitmapObject>(info->hbmMask);
    if (!color || !mask) return nullptr;
    auto pixels = copy_of(*color->surface());
    const auto holes = copy_of(*mask->surface());
    if (!pixels || !holes) return nullptr;
    for (int y = 0; y < std::min(pixels->height(), holes->height()); ++y) {
        for (int x = 0; x < std::min(pixels->width(), holes->width()); ++x) {
            if ((holes->row(y)[x] & 0xFFFFFF) != 0) pixels->row(y)[x] = 0;
        }
    }
    const SIZE size{pixels->width(), pixels->height()};
    return tvutil2::make_icon(std::move(pixels), size);
}

BOOL DrawIconEx(HDC context, int x, int y, HICON icon, int width, int height, UINT /*step*/,
                HBRUSH brush, UINT flags) {
    SIZE size{};
    const auto pixels = tvutil2::icon_pixels(icon, size);
    if (!pixels) return FALSE;
    if ((flags & DI_DEFAULTSIZE) != 0) size = {system_icon_size(), system_icon_size()};
    if (width != 0) size.cx = width;
    if (height != 0) size.cy = height;
    const RECT to{x, y, tvutil2::plus(x, size.cx), tvutil2::plus(y, size.cy)};
    if (brush != nullptr && FillRect(context, &to, brush) == 0) return FALSE;
    return tvutil2::draw_surface(context, to, *pixels, pixels->area()) ? TRUE : FALSE;
}

BOOL DrawIcon(HDC context, int x, int y, HICON icon) {
    return DrawIconEx(context, x, y, icon, 0, 0, 0, nullptr, DI_NORMAL | DI_DEFAULTSIZE);
}

namespace tvutil2 {

HICON make_icon(std::shared_ptr<const Surface> pixels, SIZE size) {
    return make_handle<HICON>(std::make_shared<IconObject>(std::move(pixels), size, false));
}

std::shared_ptr<const Surface> icon_pixels(HICON icon, SIZE& size) {
    const auto object = object_of<IconObject>(icon);
    if (!object) return nullptr;
    size = object->size();
    return object->pixels();
}

std::shared_ptr<Surface> load_picture_resource(HINSTANCE module, const char16_t* name,
                                               const char16_t* type) {
    const auto bytes = resource_bytes(module, name, type);
    return bytes.empty() ? nullptr : decode_picture(bytes);
}

std::shared_ptr<Surface> load_picture_file(const char16_t* path) {
    std::string bytes;
    return read_file(path, bytes) ? decode_picture(std::as_bytes(std::span(bytes))) : nullptr;
}

}  // namespace tvutil2
