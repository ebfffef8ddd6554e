// The objects that FromHandle makes for handles that have none.
#pragma once

#include "tvutil2/platform/picture/image_list.h"

#include <memory>
#include <unordered_map>

class CDC;
class CGdiObject;
class CImageList;
class CMenu;
class CWnd;

namespace tvutil2 {

// The object stands for a handle, or for none, without owning it.
void hold(CGdiObject& object, HGDIOBJ handle);
void hold(CDC& object, HDC handle);
void hold(CImageList& object, HIMAGELIST handle);
void hold(CMenu& object, HMENU handle);
void hold(CWnd& object, HWND handle);

/// A thread's of one class, which own nothing.
template <class Object>
class Temporaries {
  public:
    Temporaries() = default;
    ~Temporaries() { clear(); }
    Temporaries(const Temporaries&) = delete;
    Temporaries& operator=(const Temporaries&) = delete;

    /// Null for null.
    template <class Handle>
    static Object* of(Handle handle) {
        if (handle == nullptr) return nullptr;
        t_has_any = true;
        auto& object = current().m_objects[handle];
        if (!object) {
            object = std::make_unique<Object>();
            hold(*object, handle);
        }
        return object.get();
    }

    static void delete_all() {
        if (t_has_any) current().clear();
    }

  private:
    static Temporaries& current() {
        static thread_local Temporaries temporaries;
        return temporaries;
    }
    void clear() {
        for (auto& [handle, object] : m_objects) hold(*object, {});
        m_objects.clear();
    }

    // Asked when a thread is idle, which mostly never made one.
    static inline thread_local bool t_has_any = false;

    std::unordered_map<void*, std::unique_ptr<Object>> m_objects;
};

}  // namespace tvutil2
