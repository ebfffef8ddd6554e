#include "tvutil2/platform/window/paint.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/painting.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/top_level.h"
#include "tvutil2/platform/window/update.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <unordered_map>

namespace tvutil2 {
namespace {

// A context that is lent, and what may be drawn with it.
struct Loan {
    HWND window;
    Region clip;  // in pixels of the surface
};

struct Loans {
    std::mutex lock;
    std::unordered_map<HDC, Loan> all;

    static Loans& instance() {
        static auto* const loans = new Loans;  // never destroyed: threads end behind statics
        return *loans;
    }
};

// For what isn't on a display: contexts that measure, and let nothing through.
std::shared_ptr<Surface> blank_surface(UINT dpi) {
    static std::mutex lock;
    static auto* const surfaces = new std::unordered_map<UINT, std::shared_ptr<Surface>>;
    const std::lock_guard guard(lock);
    auto& surface = (*surfaces)[dpi];
    if (!surface) surface = Surface::create(1, 1, dpi);
    return surface;
}

void copy_pixels(const Surface& from, POINT corner, Surface& to) {
    const std::lock_guard guard(from.lock());
    const auto width = std::min<LONG>(to.width(), from.width() - corner.x);
    const auto height = std::min<LONG>(to.height(), from.height() - corner.y);
    for (LONG y = 0; y < height && width > 0; ++y) {
        std::copy_n(from.row(static_cast<int>(y + corner.y)) + corner.x, width,
                    to.row(static_cast<int>(y)));
    }
}

// The surface of a top-level window on a display, of the window's size; null when there is no
// memory for it.
const std::shared_ptr<Surface>& surface_of(Window& top) {
    auto& surface = top.top->surface;
    const auto area = area_of(top);
    const auto width = std::max<LONG>(area.right, 1);
    const auto height = std::max<LONG>(area.bottom, 1);
    if (surface && surface->width() == width && surface->height() == height &&
        surface->dpi() == top.dpi) {
        return surface;
    }
    auto fresh = Surface::create(static_cast<int>(width), static_cast<int>(height), top.dpi);
    if (fresh && surface) copy_pixels(*surface, {}, *fresh);
    // Before the pixels go that were named so far.
    if (fresh && top.owner == nullptr) {
        top.top->reported.name(fresh->row(0), fresh->width(), fresh->height());
    } else {
        top.top->reported.forget();
    }
    surface = std::move(fresh);
    return surface;
}

HDC lend(const TreeLock& /*tree*/, Window& window, POINT corner, Region clip) {
    auto& top = top_level_of(window);
    auto surface = top.top != nullptr ? surface_of(top) : nullptr;
    if (!surface) {
        surface = blank_surface(top.dpi);
        clip = {};
    }
    auto* const context = lend_dc(std::move(surface), corner, clip, window.hwnd());
    if (context == nullptr) return nullptr;
    auto& loans = Loans::instance();
    const std::lock_guard guard(loans.lock);
    loans.all[context] = {window.hwnd(), std::move(clip)};
    return context;
}

// To show what lies between many pieces costs less than to keep them apart.
void add_damage(Region& damage, const Region& part) {
    constexpr std::size_t kMostPieces = 64;
    damage.unite(part);
    if (damage.rects().size() > kMostPieces) damage = Region(damage.bounds());
}

// False for what isn't lent. What it has drawn is presented later.
bool take_back(HDC context) {
    Loan loan{};
    {
        auto& loans = Loans::instance();
        const std::lock_guard guard(loans.lock);
        const auto found = loans.all.find(context);
        if (found == loans.all.end()) return false;
        loan = std::move(found->second);
        loans.all.erase(found);
    }
    return_dc(context);
    if (loan.clip.is_empty()) return true;
    const TreeLock tree;
    auto* const window = tree.table.find(loan.window);
    if (window == nullptr) return true;
    auto& top = top_level_of(*window);
    if (top.top == nullptr) return true;
    add_damage(top.top->damage, loan.clip);
    auto* const queue = top.queue.load(std::memory_order_relaxed);
    if (!queue->m_has_damage.exchange(true)) queue->tell(ThreadQueue::painting);
    return true;
}

// A context while a procedure has it, which may raise something.
class Lent {
  public:
    explicit Lent(HDC context) : m_context(context) {}
    ~Lent() {
        if (m_context != nullptr) take_back(m_context);
    }
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;
    [[nodiscard]] HDC get() const { return m_context; }
    HDC keep() { return std::exchange(m_context, nullptr); }

  private:
    HDC m_context;
};

HDC get_dc(HWND window, bool is_client) {
    if (window == nullptr) return lend_dc(blank_surface(monitors().front().dpi), {}, {});
    const TreeLock tree;
    auto* const record = tree.find(window);
    if (record == nullptr) return nullptr;
    auto corner = corner_on_surface(*record);
    auto clip = visible_part(*record, is_client);
    if (is_client) {
        corner.x += record->client.left;
        corner.y += record->client.top;
    }
    return lend(tree, *record, corner, std::move(clip));
}

// Sends WM_PAINT to the window and what is in it, as far as they are out of date.
void update_now(HWND window, bool with_children) {
    std::vector<HWND> children;
    bool is_due = false;
    {
        const TreeLock tree;
        const auto* const record = tree.table.find(window);
        if (record == nullptr || !is_on_display(*record)) return;
        is_due = record->is_counted;
    }
    if (is_due && !paint_frame_only(window)) SendMessageW(window, WM_PAINT, 0, 0);
    if (!with_children) return;
    {
        const TreeLock tree;
        const auto* const record = tree.table.find(window);
        if (record == nullptr) return;
        for (const auto* child = record->first_child; child != nullptr; child = child->next) {
            children.push_back(child->hwnd());
        }
    }
    for (auto* const child : children) update_now(child, true);
}

Region part_of(const Window& window, const RECT* rect, bool frame) {
    if (rect == nullptr) return Region(frame ? area_of(window) : window.client);
    auto part = Region(moved(*rect, {window.client.left, window.client.top}));
    part.intersect(window.client);
    return part;
}

}  // namespace

bool paint_frame_only(HWND window) {
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr || !client_update(*record).is_empty()) return false;
        take_update(*record);
    }
    SendMessageW(window, WM_NCPAINT, 1, 0);
    return true;
}

bool take_paint(ThreadQueue& queue, MSG& message, const MessageFilter& filter) {
    for (;;) {
        HWND window = nullptr;
        {
            const TreeLock tree;
            auto* const next = next_out_of_date(tree.table, queue);
            if (next == nullptr) return false;
            window = next->hwnd();
        }
        if (!filter.takes_window(window)) return false;
        // A window of which only the frame is old isn't asked for more.
        if (paint_frame_only(window)) continue;
        message = {window, WM_PAINT, 0, 0, GetTickCount(), {}};
        return true;
    }
}

void present_damage(ThreadQueue& queue) {
    if (!queue.m_has_damage.exchange(false)) return;
    struct Presented {
        HWND window;
        std::shared_ptr<Surface> surface;
        Region damage;
    };
    std::vector<Presented> all;
    {
        const TreeLock tree;
        auto& root = tree.table.root();
        for (auto* each = root.first_child; each != nullptr; each = each->next) {
            if (each->top == nullptr || each->queue != &queue || each->top->damage.is_empty() ||
                !each->top->surface) {
                continue;
            }
            all.push_back({each->hwnd(), each->top->surface, std::move(each->top->damage)});
            each->top->damage = {};
        }
    }
    auto* const driver = display();
    if (driver == nullptr) return;
    for (const auto& each : all) driver->present(each.window, each.surface, each.damage);
    for (const auto& each : all) tell_content(each.window);
}

std::shared_ptr<Surface> picture_of(HWND window) {
    UpdateWindow(GetAncestor(window, GA_ROOT));
    const TreeLock tree;
    auto* const record = tree.find(window);
    if (record == nullptr || !is_on_display(*record)) return nullptr;
    const auto surface = surface_of(top_level_of(*record));
    const auto area = area_of(*record);
    if (!surface) return nullptr;
    auto picture =
        Surface::create(static_cast<int>(std::max<LONG>(area.right, 1)),
                        static_cast<int>(std::max<LONG>(area.bottom, 1)), surface->dpi());
    const auto corner = corner_on_surface(*record);
    if (picture && corner.x >= 0 && corner.y >= 0) copy_pixels(*surface, corner, *picture);
    return picture;
}

}  // namespace tvutil2

using tvutil2::Children;
using tvutil2::TreeLock;

BOOL RedrawWindow(HWND window, const RECT* rect, HRGN region, UINT flags) {
    if (region != nullptr) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        const bool frame = (flags & RDW_FRAME) != 0;
        const auto part = tvutil2::part_of(*record, rect, frame);
        if ((flags & RDW_INVALIDATE) != 0 && tvutil2::is_on_display(*record)) {
            const auto children = (flags & RDW_ALLCHILDREN) != 0  ? Children::all
                                  : (flags & RDW_NOCHILDREN) != 0 ? Children::none
                                                                  : Children::by_style;
            tvutil2::invalidate(*record, part, (flags & RDW_ERASE) != 0, frame, children);
        }
        if ((flags & RDW_VALIDATE) != 0) tvutil2::validate(*record, part);
        if ((flags & RDW_NOERASE) != 0) record->background_is_old = false;
    }
    if ((flags & (RDW_UPDATENOW | RDW_ERASENOW)) != 0) {
        tvutil2::update_now(window, (flags & RDW_NOCHILDREN) == 0);
        if (auto* const queue = tvutil2::ThreadQueue::current_or_null()) {
            tvutil2::present_damage(*queue);
        }
    }
    return TRUE;
}

BOOL InvalidateRect(HWND window, const RECT* rect, BOOL erase) {
    return RedrawWindow(window, rect, nullptr, RDW_INVALIDATE | (erase != 0 ? RDW_ERASE : 0U));
}

BOOL ValidateRect(HWND window, const RECT* rect) {
    return RedrawWindow(window, rect, nullptr, RDW_VALIDATE | (rect == nullptr ? RDW_FRAME : 0U));
}

BOOL UpdateWindow(HWND window) {
    return RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW);
}

BOOL GetUpdateRect(HWND window, RECT* rect, BOOL erase) {
    bool is_due = false;
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        const auto part = tvutil2::client_update(*record);
        const auto& client = record->client;
        if (rect != nullptr) {
            *rect = part.is_empty() ? RECT{}
                                    : tvutil2::moved(part.bounds(), {-client.left, -client.top});
        }
        if (part.is_empty()) return FALSE;
        is_due = erase != 0 && std::exchange(record->background_is_old, false);
    }
    if (!is_due) return TRUE;
    const tvutil2::Lent lent(GetDC(window));
    if (SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(lent.get()), 0) == 0) {
        const TreeLock tree;
        if (auto* const record = tree.table.find(window)) record->background_is_old = true;
    }
    return TRUE;
}

HDC BeginPaint(HWND window, PAINTSTRUCT* paint) {
    *paint = {};
    tvutil2::Update update;
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return nullptr;
        update = tvutil2::take_update(*record);
    }
    if (update.frame) SendMessageW(window, WM_NCPAINT, 1, 0);
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return nullptr;
        auto corner = tvutil2::corner_on_surface(*record);
        auto clip = std::move(update.part);
        clip.offset(corner.x, corner.y);
        clip.intersect(tvutil2::visible_part(*record, true));
        corner.x += record->client.left;
        corner.y += record->client.top;
        if (!clip.is_empty()) {
            paint->rcPaint = tvutil2::moved(clip.bounds(), {-corner.x, -corner.y});
        }
        paint->hdc = tvutil2::lend(tree, *record, corner, std::move(clip));
    }
    if (paint->hdc == nullptr) return nullptr;
    tvutil2::Lent lent(paint->hdc);
    if (update.erase) {
        const auto context = reinterpret_cast<WPARAM>(paint->hdc);
        paint->fErase = SendMessageW(window, WM_ERASEBKGND, context, 0) == 0 ? TRUE : FALSE;
    }
    return lent.keep();
}

BOOL EndPaint(HWND /*window*/, const PAINTSTRUCT* paint) {
    return paint != nullptr && tvutil2::take_back(paint->hdc) ? TRUE : FALSE;
}

HDC GetDC(HWND window) {
    return tvutil2::get_dc(window, true);
}

HDC GetWindowDC(HWND window) {
    return tvutil2::get_dc(window, false);
}

int ReleaseDC(HWND window, HDC context) {
    if (window == nullptr) return tvutil2::return_dc(context) ? 1 : 0;
    return tvutil2::take_back(context) ? 1 : 0;
}
