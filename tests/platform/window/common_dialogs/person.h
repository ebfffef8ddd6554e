// A person in front of a dialog that runs in a loop of its own: step by step, each as soon as what
// it waits for is there.
#pragma once

#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

using Names = std::vector<std::u16string>;

// The tree of a folder dialog.

inline HWND tree_of(HWND dialog) {
    return FindWindowExW(dialog, nullptr, WC_TREEVIEWW, nullptr);
}

inline HTREEITEM next(HWND dialog, WPARAM which, HTREEITEM item = nullptr) {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree_of(dialog), TVM_GETNEXTITEM, which, reinterpret_cast<LPARAM>(item)));
}

inline std::u16string name_of(HWND dialog, HTREEITEM item) {
    char16_t text[300] = {};
    TVITEMW asked{};
    asked.mask = TVIF_TEXT;
    asked.hItem = item;
    asked.pszText = text;
    asked.cchTextMax = 300;
    SendMessageW(tree_of(dialog), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked));
    return text;
}

inline std::u16string selected(HWND dialog) {
    return name_of(dialog, next(dialog, TVGN_CARET));
}

// What is in the selected folder.
inline Names inside(HWND dialog) {
    Names names;
    for (auto* item = next(dialog, TVGN_CHILD, next(dialog, TVGN_CARET)); item != nullptr;
         item = next(dialog, TVGN_NEXT, item)) {
        names.push_back(name_of(dialog, item));
    }
    return names;
}

/// The dialog that was opened last; false asks again later.
using Step = std::function<bool(HWND dialog)>;

class Person {
  public:
    explicit Person(std::vector<Step> steps) {
        current() = this;
        m_steps = std::move(steps);
        m_timer = SetTimer(nullptr, 0, 1, tick);
    }
    ~Person() {
        KillTimer(nullptr, m_timer);
        current() = nullptr;
    }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;

    [[nodiscard]] bool has_done_all() const { return m_done == m_steps.size(); }

  private:
    static Person*& current() {
        static Person* person = nullptr;
        return person;
    }
    static void tick(HWND, UINT, UINT_PTR, DWORD) {
        auto* const person = current();
        auto* const dialog = FindWindowW(u"#32770", nullptr);
        if (person == nullptr || dialog == nullptr || person->has_done_all()) return;
        // A step may open a dialog in which the next one happens.
        const auto step = person->m_steps[person->m_done++];
        if (step(dialog)) {
            person->m_waits = 0;
        } else {
            --person->m_done;
            if (++person->m_waits == kPatience) person->give_up(dialog);
        }
    }
    // What never comes is a failure, and no test that hangs.
    void give_up(HWND dialog) {
        ADD_FAILURE() << "step " << m_done << ": " << testing::PrintToString(selected(dialog))
                      << testing::PrintToString(inside(dialog));
        m_steps.clear();
        SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    }

    static constexpr int kPatience = 1000;  // ticks

    std::vector<Step> m_steps;
    std::size_t m_done = 0;
    int m_waits = 0;
    UINT_PTR m_timer = 0;
};

inline Step press(int key, std::u16string_view writes = {}) {
    return [=](HWND) {
        tvutil2::type_key(key, writes);
        return true;
    };
}
inline Step is_selected(const std::u16string& name) {
    return [name](HWND dialog) { return selected(dialog) == name; };
}
inline Step holds(const Names& names) {
    return [names](HWND dialog) { return inside(dialog) == names; };
}
inline Step click(int id) {
    return [id](HWND dialog) {
        SendMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
        return true;
    };
}

}  // namespace tests
