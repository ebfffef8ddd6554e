// The list below a field of the dialog for files: names like what is typed, or folders above.
#pragma once

#include "tvutil2/platform/window/window_types.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

/// A combo box whose list is what fits at the moment. The field keeps what is typed, whatever
/// becomes of the list.
class DropDown {
  public:
    using Offers = std::function<std::vector<std::u16string>(const std::u16string& typed)>;

    /// `offers` is asked when the list is opened; with `while_typing`, after each key as well.
    DropDown(HWND box, bool while_typing, Offers offers);

    [[nodiscard]] HWND window() const { return m_box; }
    /// A CBN_ code of the box: the text that the person has taken from the list, if that is it.
    std::optional<std::u16string> heard(WORD code);
    /// Closes the list; the field stays as it is.
    void close();
    [[nodiscard]] bool is_open() const;

  private:
    void typed();
    void fill(const std::vector<std::u16string>& offers);
    void select(std::size_t first, std::size_t last);
    void keep_text(const std::function<void()>& change);

    HWND m_box;
    bool m_while_typing;
    Offers m_offers;
    std::u16string m_typed;
    bool m_is_busy = false;   ///< what the box tells is this object's doing
    bool m_is_taken = false;  ///< the list closes over what was chosen
};

}  // namespace tvutil2
