// Telling that a folder isn't as it was when it was read.
#pragma once

#include "tvutil2/platform/watch/inotify_hub.h"

#include <functional>

namespace tvutil2 {

class FolderAlert final : private FolderSubscriber {
  public:
    FolderAlert() = default;
    ~FolderAlert();

    /// From now on `told` is called for the first change in a folder that is open, once, and from
    /// any thread; not for what the host can't watch. The folder before is left.
    void follow(int folder, std::function<void()> told);

  private:
    void on_entry(std::uint32_t, std::string_view) override { tell(); }
    void on_move(FolderSubscriber*, std::string_view, FolderSubscriber*, std::string_view,
                 bool) override {
        tell();
    }
    void on_folder_moved() override { tell(); }
    void on_folder_gone() override { tell(); }
    void on_lost() override { tell(); }
    void on_quiet() override {}
    [[nodiscard]] const void* party() const override { return this; }
    void tell();

    std::function<void()> m_told;  ///< guarded by the hub's lock; empty once it was called
};

}  // namespace tvutil2
