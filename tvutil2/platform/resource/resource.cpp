#include "tvutil2/platform/resource/resource.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/image.h"
#include "tvutil2/platform/resource/own_images.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <shared_mutex>

namespace tvutil2 {
namespace {

int compare_resources(const Resource& a, const Resource& b) {
    if (const int order = compare(a.type, b.type); order != 0) return order;
    return compare(a.name, b.name);
}

bool is_before(const Resource* a, const Resource* b) {
    const int order = compare_resources(*a, *b);
    return order != 0 ? order < 0 : a->language < b->language;
}

// All resources of a module. An entry never moves: its address is the handle that callers hold.
class ModuleResources {
  public:
    void add(std::vector<Resource> image) {
        const auto& added = m_images.emplace_back(std::move(image));
        for (const auto& resource : added) m_index.push_back(&resource);
        // Stable, so that among equals the one that was there first is found.
        std::stable_sort(m_index.begin(), m_index.end(), is_before);
    }

    [[nodiscard]] bool owns(const Resource* resource) const {
        const auto address = reinterpret_cast<std::uintptr_t>(resource);
        return std::any_of(m_images.begin(), m_images.end(), [&](const auto& image) {
            const auto offset = address - reinterpret_cast<std::uintptr_t>(image.data());
            return offset < image.size() * sizeof(Resource) && offset % sizeof(Resource) == 0;
        });
    }

    // Bytes to the end of the resource that an address lies in.
    [[nodiscard]] std::size_t bytes_from(const void* address) const {
        const auto place = reinterpret_cast<std::uintptr_t>(address);
        for (const auto* resource : m_index) {
            const auto offset = place - reinterpret_cast<std::uintptr_t>(resource->data.data());
            if (offset < resource->data.size()) return resource->data.size() - offset;
        }
        return 0;
    }

    using Range = std::span<const Resource* const>;

    [[nodiscard]] Range of_type(const ResourceName& type) const {
        return equal_range(m_index,
                           [&](const Resource& entry) { return compare(entry.type, type); });
    }
    [[nodiscard]] static Range of_name(Range range, const ResourceName& name) {
        return equal_range(range, [&](const Resource& entry) { return compare(entry.name, name); });
    }
    [[nodiscard]] static const Resource* in_language(Range range, LANGID language) {
        const auto found =
            equal_range(range, [&](const Resource& entry) { return entry.language - language; });
        return found.empty() ? nullptr : found.front();
    }

  private:
    template <class Order>
    static Range equal_range(Range range, Order order) {
        const auto first = std::partition_point(
            range.begin(), range.end(), [&](const Resource* entry) { return order(*entry) < 0; });
        const auto last = std::partition_point(
            first, range.end(), [&](const Resource* entry) { return order(*entry) == 0; });
        return {first, last};
    }

    std::deque<std::vector<Resource>> m_images;
    std::vector<const Resource*> m_index;
};

struct AllResources {
    std::shared_mutex mutex;
    ForkLock is_fork_safe{mutex, ForkRank::modules};
    std::map<HMODULE, ModuleResources> modules;
    std::once_flag own_added;
};

AllResources& all_resources() {
    // Never destroyed: the last look-ups come from destructors of static objects.
    static auto* const all = new AllResources;
    return *all;
}

HMODULE module_or_executable(HMODULE module) {
    return module != nullptr ? module : GetModuleHandleW(nullptr);
}

bool add(HMODULE module, std::span<const std::byte> image) {
    auto resources = read_image(image);
    if (!resources) return false;
    auto& all = all_resources();
    const std::unique_lock lock(all.mutex);
    all.modules[module].add(std::move(*resources));
    return true;
}

// The library's own are indexed at the first look-up and not at its load.
void add_own_resources(HMODULE module) {
    if (module != library_instance()) return;
    std::call_once(all_resources().own_added, [&] {
        for (const auto image : own_images()) add(module, image);
    });
}

// Calls `use` with a module's resources, null when it has none, while they can't change.
template <class Use>
auto with_resources(HMODULE module, Use use) {
    module = module_or_executable(module);
    add_own_resources(module);
    auto& all = all_resources();
    const std::shared_lock lock(all.mutex);
    const auto found = all.modules.find(module);
    return use(found == all.modules.end() ? nullptr : &found->second);
}

// "#123" is the number 123, as a script may write it.
ResourceName name_of(const char16_t* name) {
    if (IS_INTRESOURCE(name)) return {{}, LOWORD(reinterpret_cast<std::uintptr_t>(name))};
    if (*name == u'#') {
        unsigned int number = 0;
        const char16_t* digit = name + 1;
        for (; *digit >= u'0' && *digit <= u'9' && number <= 0xFFFF; ++digit) {
            number = number * 10 + (*digit - u'0');
        }
        if (*digit == 0 && digit != name + 1 && number <= 0xFFFF) {
            return {{}, static_cast<WORD>(number)};
        }
    }
    return {name, 0};
}

constexpr LANGID kNeutral = 0;
constexpr LANGID kSystemDefault = 0x0800;
constexpr LANGID kEnglish = 0x0409;

const Resource* first_of(ModuleResources::Range range, std::initializer_list<LANGID> languages) {
    for (const auto language : languages) {
        if (const auto* found = ModuleResources::in_language(range, language)) return found;
    }
    return nullptr;
}

const Resource* choose(ModuleResources::Range range, LANGID language) {
    if (PRIMARYLANGID(language) != kNeutral) {
        return first_of(range, {language, PRIMARYLANGID(language), kNeutral});
    }
    if (language != kSystemDefault) {
        const auto thread = LANGIDFROMLCID(GetThreadLocale());
        if (const auto* found = first_of(range, {thread, PRIMARYLANGID(thread)})) return found;
    }
    const auto* found = first_of(range, {GetSystemDefaultLangID(), kNeutral, kEnglish});
    return found != nullptr ? found : range.front();
}

const Resource* find(const ModuleResources* resources, const ResourceName& type,
                     const ResourceName& name, LANGID language) {
    if (resources == nullptr) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    const auto of_type = resources->of_type(type);
    const auto of_name = ModuleResources::of_name(of_type, name);
    const auto* found = of_name.empty() ? nullptr : choose(of_name, language);
    if (found == nullptr) {
        SetLastError(of_type.empty()   ? ERROR_RESOURCE_TYPE_NOT_FOUND
                     : of_name.empty() ? ERROR_RESOURCE_NAME_NOT_FOUND
                                       : ERROR_RESOURCE_LANG_NOT_FOUND);
    }
    return found;
}

// The entry behind a handle, if the module has it.
const Resource* checked(HMODULE module, HRSRC handle) {
    const auto* resource = reinterpret_cast<const Resource*>(handle);
    const bool is_owned = with_resources(module, [&](const ModuleResources* resources) {
        return resources != nullptr && resources->owns(resource);
    });
    if (is_owned) return resource;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

}  // namespace

std::size_t bytes_in_resource(const void* address) {
    auto& all = all_resources();
    const std::shared_lock lock(all.mutex);
    for (const auto& [module, resources] : all.modules) {
        if (const auto bytes = resources.bytes_from(address)) return bytes;
    }
    return 0;
}

std::u16string_view string_in_block(std::span<const std::byte> block, unsigned int index) {
    for (;; --index) {
        WORD length = 0;
        if (block.size() < sizeof length) return {};
        std::memcpy(&length, block.data(), sizeof length);
        block = block.subspan(sizeof length);
        if (block.size() / 2 < length) return {};
        if (index == 0) return {reinterpret_cast<const char16_t*>(block.data()), length};
        block = block.subspan(std::size_t{length} * 2);
    }
}

bool add_module_resources(HMODULE module, const void* image, std::size_t size) {
    if (image == nullptr || reinterpret_cast<std::uintptr_t>(image) % 4 != 0) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    module = module_or_executable(module);
    add_own_resources(module);
    return add(module, {static_cast<const std::byte*>(image), size}) || fail_with(ERROR_BAD_FORMAT);
}

void remove_module_resources(HMODULE module) {
    module = module_or_executable(module);
    if (module == library_instance()) return;
    auto& all = all_resources();
    const std::unique_lock lock(all.mutex);
    all.modules.erase(module);
}

}  // namespace tvutil2

HRSRC FindResourceExW(HMODULE module, const char16_t* type, const char16_t* name, WORD language) {
    const auto type_name = tvutil2::name_of(type);
    const auto resource_name = tvutil2::name_of(name);
    const auto* found =
        tvutil2::with_resources(module, [&](const tvutil2::ModuleResources* resources) {
            return tvutil2::find(resources, type_name, resource_name, language);
        });
    return reinterpret_cast<HRSRC>(const_cast<tvutil2::Resource*>(found));
}

HRSRC FindResourceW(HMODULE module, const char16_t* name, const char16_t* type) {
    return FindResourceExW(module, type, name, tvutil2::kNeutral);
}

DWORD SizeofResource(HMODULE module, HRSRC resource) {
    const auto* entry = tvutil2::checked(module, resource);
    return entry == nullptr ? 0 : static_cast<DWORD>(entry->data.size());
}

HGLOBAL LoadResource(HMODULE module, HRSRC resource) {
    const auto* entry = tvutil2::checked(module, resource);
    if (entry == nullptr) return nullptr;
    return reinterpret_cast<HGLOBAL>(const_cast<std::byte*>(entry->data.data()));
}

const void* LockResource(HGLOBAL resource) {
    return resource;
}

int LoadStringW(HINSTANCE module, UINT id, char16_t* buffer, int size) {
    const auto block = static_cast<WORD>((LOWORD(id) >> 4) + 1);
    const auto found = FindResourceW(module, MAKEINTRESOURCEW(block), RT_STRING);
    if (found == nullptr) return 0;
    if (buffer == nullptr || size < 0) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    const auto text =
        tvutil2::string_in_block(reinterpret_cast<const tvutil2::Resource*>(found)->data, id & 0xF);
    if (text.empty()) return tvutil2::fail_with(ERROR_RESOURCE_NAME_NOT_FOUND);
    if (size == 0) {
        const auto* address = text.data();
        std::memcpy(buffer, &address, sizeof address);
        return static_cast<int>(text.size());
    }
    const auto count = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    std::copy_n(text.data(), count, buffer);
    buffer[count] = 0;
    return static_cast<int>(count);
}
