#include "tvutil2/platform/window/menus/menu_template.h"

#include "tvutil2/platform/window/menus/menu_object.h"
#include "tvutil2/platform/window/template_reader.h"

namespace tvutil2 {
namespace {

constexpr UINT kLast = 0x80;     // of its menu
constexpr WORD kPopupEx = 0x01;  // in MENUEX; kLast is the same there

class Reader : public TemplateReader {
  public:
    using TemplateReader::TemplateReader;

    /// False beyond what a menu may hold.
    bool count_item() { return ++m_items <= kMostMenuItems; }

  private:
    std::size_t m_items = 0;
};

bool read_items(Reader& reader, int depth, std::vector<MenuTemplateItem>& items) {
    if (depth > kMenuNesting) return false;
    for (bool is_last = false; !is_last;) {
        const UINT flags = reader.number<WORD>();
        if (!reader.is_whole() || !reader.count_item()) return false;
        is_last = (flags & kLast) != 0;
        MenuTemplateItem item;
        item.is_popup = (flags & MF_POPUP) != 0;
        item.state = flags & (MF_GRAYED | MF_DISABLED | MF_CHECKED);
        if (!item.is_popup) item.id = reader.number<WORD>();
        item.text = reader.text();
        const bool is_line = !item.is_popup && item.text.empty() && item.id == 0;
        if ((flags & MF_SEPARATOR) != 0 || is_line) item.type = MFT_SEPARATOR;
        if (item.is_popup && !read_items(reader, depth + 1, item.items)) return false;
        items.push_back(std::move(item));
    }
    return reader.is_whole();
}

bool read_items_ex(Reader& reader, int depth, std::vector<MenuTemplateItem>& items) {
    if (depth > kMenuNesting) return false;
    for (bool is_last = false; !is_last;) {
        reader.align();
        MenuTemplateItem item;
        item.type = reader.number<DWORD>();
        item.state = reader.number<DWORD>();
        item.id = reader.number<DWORD>();
        const auto flags = reader.number<WORD>();
        item.text = reader.text();
        if (!reader.is_whole() || !reader.count_item()) return false;
        is_last = (flags & kLast) != 0;
        item.is_popup = (flags & kPopupEx) != 0;
        if (item.is_popup) {
            reader.align();
            reader.number<DWORD>();  // of the help
            if (!read_items_ex(reader, depth + 1, item.items)) return false;
        }
        items.push_back(std::move(item));
    }
    return reader.is_whole();
}

}  // namespace

std::optional<std::vector<MenuTemplateItem>> read_menu_template(std::span<const std::byte> bytes) {
    Reader reader(bytes);
    const auto version = reader.number<WORD>();
    const auto header = reader.number<WORD>();
    if (!reader.is_whole() || version > 1) return std::nullopt;
    std::vector<MenuTemplateItem> items;
    reader.take(header);
    const bool is_read =
        version == 0 ? read_items(reader, 1, items) : read_items_ex(reader, 1, items);
    if (!is_read) return std::nullopt;
    return items;
}

}  // namespace tvutil2
