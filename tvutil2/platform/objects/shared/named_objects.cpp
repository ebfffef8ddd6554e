#include "tvutil2/platform/objects/shared/named_objects.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/objects/shared/holders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <new>

namespace tvutil2::named_objects {
namespace {

struct Known {
    std::mutex lock;  // held before that of a file
    std::map<std::u16string, std::weak_ptr<SharedObject>, std::less<>> objects;
};

Known& known() {
    static auto* const instance = new Known;
    return *instance;
}

Holder record_of(const SharedObject& object) {
    return {object.name(), getpid(), object.block().descriptor(), object.file_descriptor(),
            object.block().inode()};
}

bool enter(const SharedObject& object) {
    HolderFile file(object.name());
    if (!file.is_open()) return false;
    file.holders().push_back(record_of(object));
    return file.save();
}

// A child holds what its parent held, and owns nothing.
void begin_child() {
    for (const auto& [name, held] : known().objects) {
        if (const auto object = held.lock()) enter(*object);
    }
    new (&known().lock) std::mutex;
    ThreadRecord::current().forget_shared();
}

void guard_forks() {
    static const ForkMember is_fork_safe(
        ForkRank::area, nullptr, [](void* /*what*/) { known().lock.lock(); },
        [](void* /*what*/) { known().lock.unlock(); }, [](void* /*what*/) { begin_child(); });
}

// A name as it is looked up; empty with the last error. Names without a prefix are local ones; all
// are the user's.
std::u16string key_of(std::u16string_view name) {
    constexpr std::u16string_view kLocal = u"Local\\";
    constexpr std::u16string_view kGlobal = u"Global\\";
    constexpr std::size_t kMaxName = 260;
    if (name.size() > kMaxName) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return {};
    }
    const bool is_global = name.starts_with(kGlobal);
    const auto rest = is_global                  ? name.substr(kGlobal.size())
                      : name.starts_with(kLocal) ? name.substr(kLocal.size())
                                                 : name;
    if (rest.empty() || rest.find(u'\\') != std::u16string_view::npos) {
        SetLastError(rest.empty() ? ERROR_INVALID_NAME : ERROR_PATH_NOT_FOUND);
        return {};
    }
    return std::u16string(is_global ? kGlobal : std::u16string_view()).append(rest);
}

// The descriptor that a holder has beside the block's, if it is that of the file in the header.
Descriptor open_file_of(const Holder& holder, const BlockHeader& header) {
    const auto path =
        "/proc/" + std::to_string(holder.process) + "/fd/" + std::to_string(holder.file_descriptor);
    constexpr int kFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    Descriptor file(::open(path.c_str(), O_RDWR | kFlags));
    if (!file) file = Descriptor(::open(path.c_str(), O_RDONLY | kFlags));
    struct stat info {};
    const bool is_same = file && fstat(file.get(), &info) == 0 && info.st_dev == header.device &&
                         info.st_ino == header.inode;
    return is_same ? std::move(file) : Descriptor();
}

struct Found {
    std::unique_ptr<SharedBlock> block;
    Descriptor file;
};

// The first holder that is still there. Those of the name that aren't are dropped.
Found find_holder(std::vector<Holder>& holders, const std::u16string& key) {
    Found found;
    std::erase_if(holders, [&](const Holder& holder) {
        if (holder.name != key || found.block) return false;
        auto block = SharedBlock::open(holder.process, holder.descriptor, holder.inode);
        if (!block) return true;
        const bool has_file = block->header().inode != 0;
        if (has_file && !(found.file = open_file_of(holder, block->header()))) return true;
        found.block = std::move(block);
        return false;
    });
    return found;
}

std::shared_ptr<SharedObject> refuse(DWORD error) {
    SetLastError(error);
    return nullptr;
}

Found make_new(HandleKind kind, const Beginning& beginning) {
    Found made;
    made.block = SharedBlock::create(kind, beginning.traits, beginning.size);
    if (!made.block) return made;
    if (beginning.set_up) beginning.set_up(made.block->header());
    made.block->adopt();
    if (beginning.file < 0) return made;
    // Not a duplicate: that would keep the handle's sharing mode.
    const auto path = "/proc/self/fd/" + std::to_string(beginning.file);
    const int access = beginning.writes_file ? O_RDWR : O_RDONLY;
    made.file = Descriptor(::open(path.c_str(), access | O_CLOEXEC));
    if (made.file) return made;
    fail_with_errno();
    return {};
}

}  // namespace

std::shared_ptr<SharedObject> open(HandleKind kind, const char16_t* name, bool may_create,
                                   const Beginning& beginning,
                                   const std::function<void(SharedObject&)>& on_new) {
    auto key = key_of(name);
    if (key.empty()) return nullptr;
    if (kind == HandleKind::mutex && RobustList::current() == nullptr) {
        return refuse(ERROR_NOT_SUPPORTED);
    }
    guard_forks();
    std::shared_ptr<SharedObject> object;  // may be the last one, and then is destroyed unlocked
    const std::lock_guard guard(known().lock);
    if (const auto held = known().objects.find(key); held != known().objects.end()) {
        object = held->second.lock();
        if (object) {
            if (object->kind() != kind) return refuse(ERROR_INVALID_HANDLE);
            SetLastError(ERROR_ALREADY_EXISTS);
            return object;
        }
    }
    HolderFile file(key);
    if (!file.is_open()) return nullptr;
    auto found = find_holder(file.holders(), key);
    const bool is_new = !found.block;
    if (is_new) {
        if (!may_create) return refuse(ERROR_FILE_NOT_FOUND);
        found = make_new(kind, beginning);
        if (!found.block) return nullptr;
    }
    if (found.block->kind() != kind) return refuse(ERROR_INVALID_HANDLE);
    object = beginning.make(std::move(found.block), key, std::move(found.file));
    file.holders().push_back(record_of(*object));
    if (!file.save()) {
        object->forget_name();
        return nullptr;
    }
    if (is_new && on_new) on_new(*object);
    known().objects[std::move(key)] = object;
    SetLastError(is_new ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS);
    return object;
}

std::shared_ptr<SharedObject> make_unnamed(HandleKind kind, const Beginning& beginning) {
    auto made = make_new(kind, beginning);
    if (!made.block) return nullptr;
    SetLastError(ERROR_SUCCESS);
    return beginning.make(std::move(made.block), {}, std::move(made.file));
}

bool is_only_holder(const SharedObject& object) {
    const std::lock_guard guard(known().lock);
    HolderFile file(object.name());
    if (!file.is_open()) return false;
    const auto own = record_of(object);
    return std::none_of(file.holders().begin(), file.holders().end(), [&](const Holder& holder) {
        return holder.name == own.name && holder.process != own.process &&
               SharedBlock::is_there(holder.process, holder.descriptor, holder.inode);
    });
}

void give_up(const SharedObject& object) {
    if (object.name().empty()) return;
    const std::lock_guard guard(known().lock);
    const auto error = GetLastError();
    // A later one of this process may have the name by now.
    if (const auto held = known().objects.find(object.name());
        held != known().objects.end() && held->second.expired()) {
        known().objects.erase(held);
    }
    HolderFile file(object.name());
    if (file.is_open()) {
        const auto own = record_of(object);
        std::erase_if(file.holders(), [&](const Holder& holder) {
            const bool is_own = holder.process == own.process &&
                                holder.descriptor == own.descriptor && holder.inode == own.inode;
            return is_own ||
                   !SharedBlock::is_there(holder.process, holder.descriptor, holder.inode);
        });
        file.save();
    }
    SetLastError(error);
}

}  // namespace tvutil2::named_objects
