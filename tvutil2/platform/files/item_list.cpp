#include "tvutil2/platform/files/item_list.h"

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/task_memory.h"
#include "tvutil2/platform/files/known_folders.h"

#include <cstring>
#include <vector>

namespace tvutil2 {
namespace {

enum class Kind : unsigned char { computer = 1, drive = 2, name = 3 };

constexpr std::size_t kHead = sizeof(WORD) + 2;
// More than any path has; a list that is longer has no end.
constexpr std::size_t kMostItems = 4096;
constexpr std::size_t kMostUnits = 255;

using Bytes = std::vector<unsigned char>;

void put_size(Bytes& bytes, std::size_t size) {
    bytes.push_back(static_cast<unsigned char>(size & 0xFF));
    bytes.push_back(static_cast<unsigned char>(size >> 8));
}

void put(Bytes& bytes, Kind kind, std::u16string_view name) {
    put_size(bytes, kHead + name.size() * sizeof(char16_t));
    bytes.push_back(static_cast<unsigned char>(kind));
    bytes.push_back(0);
    const auto* const units = reinterpret_cast<const unsigned char*>(name.data());
    bytes.insert(bytes.end(), units, units + name.size() * sizeof(char16_t));
}

ItemList made(Bytes bytes) {
    put_size(bytes, 0);
    auto* const memory = CoTaskMemAlloc(bytes.size());
    if (memory == nullptr) return nullptr;
    std::memcpy(memory, bytes.data(), bytes.size());
    return ItemList(static_cast<ITEMIDLIST*>(memory));
}

struct Item {
    Kind kind;
    std::u16string name;
};

// The size at the place; 0 at the end, and for an item that is none of ours.
std::size_t size_at(const unsigned char* place) {
    WORD size = 0;
    std::memcpy(&size, place, sizeof size);
    return size >= kHead && size % 2 == 0 ? size : 0;
}

Item item_at(const unsigned char* place, std::size_t size) {
    Item item{static_cast<Kind>(place[sizeof(WORD)]), {}};
    item.name.resize((size - kHead) / sizeof(char16_t));
    std::memcpy(item.name.data(), place + kHead, size - kHead);
    return item;
}

std::optional<std::u16string> desktop_path() {
    char16_t path[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_DESKTOPDIRECTORY, nullptr, 0, path))) {
        return std::nullopt;
    }
    return path;
}

}  // namespace

ItemList item_list_of(std::u16string_view path) {
    if (path.size() < 2 || path[1] != u':') return nullptr;
    Bytes bytes;
    put(bytes, Kind::computer, {});
    put(bytes, Kind::drive, path.substr(0, 2));
    path.remove_prefix(2);
    while (!path.empty()) {
        const auto end = path.find(u'\\');
        const auto name = path.substr(0, end);
        if (name.size() > kMostUnits) return nullptr;
        if (!name.empty()) put(bytes, Kind::name, name);
        path.remove_prefix(end == std::u16string_view::npos ? path.size() : end + 1);
    }
    return made(std::move(bytes));
}

ItemList desktop_item_list() {
    return made({});
}

ItemList computer_item_list() {
    Bytes bytes;
    put(bytes, Kind::computer, {});
    return made(std::move(bytes));
}

std::optional<std::u16string> path_of(PCIDLIST_ABSOLUTE list) {
    if (list == nullptr) return std::nullopt;
    const auto* place = reinterpret_cast<const unsigned char*>(list);
    if (list->mkid.cb == 0) return desktop_path();
    std::u16string path;
    for (std::size_t i = 0; i < kMostItems; ++i) {
        const auto size = size_at(place);
        if (size == 0) break;
        const auto item = item_at(place, size);
        if (item.kind == Kind::drive) path = item.name + u"\\";
        if (item.kind == Kind::name && !path.empty()) {
            if (path.back() != u'\\') path += u'\\';
            path += item.name;
        }
        place += size;
    }
    return path.empty() ? std::nullopt : std::optional(std::move(path));
}

}  // namespace tvutil2

BOOL SHGetPathFromIDListW(PCIDLIST_ABSOLUTE list, char16_t* path) {
    if (path == nullptr) return FALSE;
    *path = 0;
    const auto found = tvutil2::path_of(list);
    if (!found || found->size() >= MAX_PATH) return FALSE;
    path[found->copy(path, MAX_PATH - 1)] = 0;
    return TRUE;
}

HRESULT SHGetSpecialFolderLocation(HWND owner, int folder, PIDLIST_ABSOLUTE* list) {
    if (list == nullptr) return E_INVALIDARG;
    *list = nullptr;
    tvutil2::ItemList made;
    if (folder == CSIDL_DESKTOP) {
        made = tvutil2::desktop_item_list();
    } else if (folder == CSIDL_DRIVES) {
        made = tvutil2::computer_item_list();
    } else {
        char16_t path[MAX_PATH];
        const auto result = SHGetFolderPathW(owner, folder, nullptr, SHGFP_TYPE_CURRENT, path);
        if (FAILED(result)) return result;
        made = tvutil2::item_list_of(path);
    }
    *list = made.release();
    return *list != nullptr ? S_OK : E_OUTOFMEMORY;
}

UINT ILGetSize(PCIDLIST_ABSOLUTE list) {
    if (list == nullptr) return 0;
    const auto* const first = reinterpret_cast<const unsigned char*>(list);
    std::size_t bytes = 0;
    for (std::size_t items = 0; items < tvutil2::kMostItems; ++items) {
        const auto size = tvutil2::size_at(first + bytes);
        if (size == 0) break;
        bytes += size;
    }
    return static_cast<UINT>(bytes + sizeof(WORD));
}

void ILFree(PIDLIST_ABSOLUTE list) {
    CoTaskMemFree(list);
}
