#include "tvutil2/settings/ini_writer.h"

#include "tvutil2/framework/text_search.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/settings/ini_file.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tvutil2 {
namespace {

constexpr std::size_t kBlock = std::size_t{32} << 10;

// Gathers text in blocks and hands each full one to `take`, which says whether to go on. No block
// ends within a surrogate pair.
template <class Take>
class Blocks {
  public:
    explicit Blocks(Take take) : m_take(std::move(take)) {}

    void put(std::u16string_view text) {
        while (!text.empty()) {
            if (m_size == kBlock) hand_over();
            const auto count = std::min(text.size(), kBlock - m_size);
            std::copy_n(text.data(), count, &m_units[m_size]);
            m_size += count;
            text.remove_prefix(count);
        }
    }
    // With CR LF for each line end.
    void put_lines(std::u16string_view text) {
        for (auto end = find_unit(text, u'\n'); end != std::u16string_view::npos;
             end = find_unit(text, u'\n')) {
            put(text.substr(0, end));
            put(u"\r\n");
            text.remove_prefix(end + 1);
        }
        put(text);
    }
    // Whether all was taken.
    bool finish() {
        while (m_size != 0) hand_over();
        return m_goes_on;
    }

  private:
    void hand_over() {
        const bool is_in_pair = m_size > 1 && (m_units[m_size - 1] & 0xFC00) == 0xD800;
        const auto count = m_size - (is_in_pair ? 1 : 0);
        m_goes_on = m_goes_on && m_take(std::u16string_view(m_units.get(), count));
        m_units[0] = m_units[m_size - 1];
        m_size -= count;
    }

    Take m_take;
    std::unique_ptr<char16_t[]> m_units = std::make_unique_for_overwrite<char16_t[]>(kBlock);
    std::size_t m_size = 0;
    bool m_goes_on = true;
};

// Each header stands above its keys, and what a walk meets last stands first; `front` stands before
// it all. Whether all was taken.
template <class Take>
bool make_text(const CIniFile& document, std::u16string_view front, Take take) {
    Blocks blocks(std::move(take));
    blocks.put(front);
    document.sections.ForEachFromBehind([&blocks](std::u16string_view name, void* section) {
        if (section == nullptr) return;
        blocks.put(u"[");
        blocks.put_lines(name);
        blocks.put(u"]\r\n");
        const auto& values = static_cast<const CIniSection*>(section)->Values();
        values.ForEachFromBehind([&blocks](std::u16string_view key, std::u16string_view value) {
            blocks.put_lines(key);
            blocks.put(u"=");
            blocks.put_lines(value);
            blocks.put(u"\r\n");
        });
    });
    return blocks.finish();
}

// In the ANSI code page, in room that is used again.
class Encoder {
  public:
    // Nothing when the page doesn't hold it all. Holds until the next call.
    std::optional<std::string_view> encode(std::u16string_view text) {
        m_bytes.resize(std::max(m_bytes.size(), codepage::byte_room(CP_ACP, text.size())));
        BOOL used_default = FALSE;
        const auto size = codepage::put_bytes(CP_ACP, 0, text, m_bytes, "?", &used_default);
        if (!size || used_default != FALSE) return std::nullopt;
        return std::string_view(m_bytes).substr(0, *size);
    }

  private:
    std::string m_bytes;
};

class OutFile {
  public:
    explicit OutFile(HANDLE file) : m_file(file) {}
    ~OutFile() { CloseHandle(m_file); }
    OutFile(const OutFile&) = delete;
    OutFile& operator=(const OutFile&) = delete;

    [[nodiscard]] LONGLONG size() const {
        LARGE_INTEGER size{};
        GetFileSizeEx(m_file, &size);
        return size.QuadPart;
    }
    bool write_at(LONGLONG place, std::string_view bytes) {
        if (!go_to(place)) return false;
        while (!bytes.empty()) {
            constexpr std::size_t kMost = std::size_t{1} << 30;
            const auto size = static_cast<DWORD>(std::min(bytes.size(), kMost));
            DWORD written = 0;
            const auto result = WriteFile(m_file, bytes.data(), size, &written, nullptr);
            m_place += written;
            if (result == FALSE) return false;
            bytes.remove_prefix(size);
        }
        return true;
    }
    void cut_at(LONGLONG size) {
        if (go_to(size)) SetEndOfFile(m_file);
    }
    void flush() { FlushFileBuffers(m_file); }

  private:
    bool go_to(LONGLONG place) {
        LARGE_INTEGER distance{};
        distance.QuadPart = place;
        if (place != m_place && SetFilePointerEx(m_file, distance, nullptr, FILE_BEGIN) == FALSE) {
            return false;
        }
        m_place = place;
        return true;
    }

    HANDLE m_file;
    LONGLONG m_place = 0;
};

// `make(take)` makes the content, piece by piece, as long as `take` says so, and gives whether all
// was taken. It is made twice: what lies beyond the old content is written first, since it alone
// needs room on the disk, and while it fails nothing of the old content is gone.
template <class Make>
void replace_content(OutFile& file, Make make) {
    LONGLONG size = 0;
    const auto write_part = [&](LONGLONG begin, LONGLONG end) {
        size = 0;
        return make([&](std::string_view piece) {
            const auto place = std::exchange(size, size + static_cast<LONGLONG>(piece.size()));
            const auto from = std::max(begin, place);
            const auto to = std::min(end, size);
            return from >= to || file.write_at(from, piece.substr(std::size_t(from - place),
                                                                  std::size_t(to - from)));
        });
    };
    const auto old_size = file.size();
    if (!write_part(old_size, std::numeric_limits<LONGLONG>::max())) {
        const auto error = GetLastError();
        file.cut_at(old_size);
        return SetLastError(error);
    }
    if (old_size != 0 && write_part(0, old_size) && size < old_size) file.cut_at(size);
}

void write_utf16(OutFile& file, const CIniFile& document) {
    replace_content(file, [&document](auto take) {
        return make_text(document, u"\xFEFF", [&take](std::u16string_view text) {
            return take(
                {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)});
        });
    });
}

// False when the page doesn't hold it all; then the file is as it was.
bool write_narrow(OutFile& file, const CIniFile& document) {
    bool is_held = true;
    Encoder encoder;
    replace_content(file, [&](auto take) {
        return make_text(document, {}, [&](std::u16string_view text) {
            const auto bytes = encoder.encode(text);
            is_held = bytes.has_value();
            return is_held && take(*bytes);
        });
    });
    return is_held;
}

}  // namespace

bool write_ini(const char16_t* path, const CIniFile& document, bool is_utf16, bool is_flushed) {
    const auto handle = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    OutFile file(handle);
    if (!is_utf16 && write_narrow(file, document)) return true;
    write_utf16(file, document);
    if (is_flushed) file.flush();
    return true;
}

}  // namespace tvutil2
