// Drawing beside plain cairo and pango on the same kind of pixels: rectangles, copies, and text as
// a control writes it (measured, then drawn, again at each repaint) and as a list scrolls (each
// line once).
#include "tvutil2/platform/draw/blend.h"
#include "tvutil2/platform/draw/blit.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"

#include <benchmark/benchmark.h>
#include <pango/pangocairo.h>

#include <string>
#include <vector>

namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 600;
constexpr int kRows = 30;
constexpr int kFontSize = 12;

// What a control writes, and a line that was never there before.
std::string label(int row) {
    return "Select &Language and folder " + std::to_string(row);
}
std::string next_line() {
    static int number = 0;
    return "session-" + std::to_string(++number) + ".example.net  connected  12:30";
}
std::u16string wide(const std::string& text) {
    return {text.begin(), text.end()};
}

class Ours {
  public:
    Ours() {
        auto font = tvutil2::interface_font(96);
        font.lfHeight = -kFontSize;
        m_font = CreateFontIndirectW(&font);
        m_dc = tvutil2::lend_dc(m_surface, {}, tvutil2::Region(m_surface->area()));
        SelectObject(m_dc, m_font);
        SetBkMode(m_dc, TRANSPARENT);
    }
    ~Ours() {
        tvutil2::return_dc(m_dc);
        DeleteObject(m_font);
    }
    Ours(const Ours&) = delete;
    Ours& operator=(const Ours&) = delete;

    [[nodiscard]] HDC dc() const { return m_dc; }
    void write(const std::u16string& text, int row, UINT format) const {
        RECT box{10, row * 20, 400, row * 20 + 20};
        const auto size = static_cast<int>(text.size());
        DrawTextW(m_dc, text.data(), size, &box, format | DT_CALCRECT);
        DrawTextW(m_dc, text.data(), size, &box, format);
    }

  private:
    std::shared_ptr<tvutil2::Surface> m_surface = tvutil2::Surface::create(kWidth, kHeight);
    HFONT m_font;
    HDC m_dc;
};

class Cairo {
  public:
    Cairo() {
        // A surface that nobody has drawn on is copied by doing nothing.
        cairo_set_source_rgb(m_cairo, 1, 1, 1);
        cairo_paint(m_cairo);
        m_font = pango_font_description_from_string("sans-serif");
        pango_font_description_set_absolute_size(m_font, kFontSize * double{PANGO_SCALE});
        m_context = pango_cairo_create_context(m_cairo);
    }
    ~Cairo() {
        g_object_unref(m_context);
        pango_font_description_free(m_font);
        cairo_destroy(m_cairo);
        cairo_surface_destroy(m_surface);
    }
    Cairo(const Cairo&) = delete;
    Cairo& operator=(const Cairo&) = delete;

    [[nodiscard]] cairo_t* get() const { return m_cairo; }
    [[nodiscard]] cairo_surface_t* surface() const { return m_surface; }
    void write(const std::string& text, int row) const {
        PangoLayout* const layout = pango_layout_new(m_context);
        pango_layout_set_font_description(layout, m_font);
        pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
        int width = 0;
        int height = 0;
        pango_layout_get_pixel_size(layout, &width, &height);
        benchmark::DoNotOptimize(width);
        cairo_set_source_rgb(m_cairo, 0, 0, 0);
        cairo_move_to(m_cairo, 10, row * 20.0);
        pango_cairo_show_layout(m_cairo, layout);
        g_object_unref(layout);
    }

  private:
    cairo_surface_t* m_surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kWidth, kHeight);
    cairo_t* m_cairo = cairo_create(m_surface);
    PangoFontDescription* m_font;
    PangoContext* m_context;
};

void fill_ours(benchmark::State& state, int width, int height) {
    const Ours paper;
    const auto brush = CreateSolidBrush(RGB(10, 20, 30));
    const RECT rect{5, 5, 5 + width, 5 + height};
    for (auto _ : state) FillRect(paper.dc(), &rect, brush);
    DeleteObject(brush);
}

void fill_cairo(benchmark::State& state, int width, int height) {
    const Cairo paper;
    for (auto _ : state) {
        cairo_set_source_rgb(paper.get(), 10 / 255.0, 20 / 255.0, 30 / 255.0);
        cairo_rectangle(paper.get(), 5, 5, width, height);
        cairo_fill(paper.get());
    }
}

void copy_ours(benchmark::State& state) {
    const Ours from;
    const Ours to;
    for (auto _ : state) BitBlt(to.dc(), 0, 0, kWidth, kHeight, from.dc(), 0, 0, SRCCOPY);
}

void copy_cairo(benchmark::State& state) {
    const Cairo from;
    const Cairo to;
    for (auto _ : state) {
        cairo_set_operator(to.get(), CAIRO_OPERATOR_SOURCE);
        cairo_set_source_surface(to.get(), from.surface(), 0, 0);
        cairo_paint(to.get());
    }
}

void repaint_ours(benchmark::State& state) {
    const Ours paper;
    std::vector<std::u16string> labels;
    for (int row = 0; row < kRows; ++row) labels.push_back(wide(label(row)));
    for (auto _ : state) {
        for (int row = 0; row < kRows; ++row) {
            paper.write(labels[static_cast<std::size_t>(row)], row, DT_SINGLELINE | DT_VCENTER);
        }
    }
}

void repaint_cairo(benchmark::State& state) {
    const Cairo paper;
    for (auto _ : state) {
        for (int row = 0; row < kRows; ++row) paper.write(label(row), row);
    }
}

void scroll_ours(benchmark::State& state) {
    const Ours paper;
    for (auto _ : state) {
        for (int row = 0; row < kRows; ++row) {
            paper.write(wide(next_line()), row, DT_SINGLELINE | DT_NOPREFIX);
        }
    }
}

void scroll_cairo(benchmark::State& state) {
    const Cairo paper;
    for (auto _ : state) {
        for (int row = 0; row < kRows; ++row) paper.write(next_line(), row);
    }
}

// A picture with soft edges, over what is there.
std::shared_ptr<tvutil2::Surface> soft_picture(int side) {
    auto picture = tvutil2::Surface::create(side, side, 96, 0xFF336699);
    for (int i = 0; i < side; ++i) picture->row(i)[0] = picture->row(i)[side - 1] = 0x80193350;
    return picture;
}

void picture_ours(benchmark::State& state, int side) {
    const Ours paper;
    const auto picture = soft_picture(side);
    const RECT to{5, 5, 5 + side, 5 + side};
    for (auto _ : state) tvutil2::draw_surface(paper.dc(), to, *picture, picture->area());
}

void picture_cairo(benchmark::State& state, int side) {
    const Cairo paper;
    const auto picture = soft_picture(side);
    auto* const source =
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(picture->row(0)),
                                            CAIRO_FORMAT_ARGB32, side, side, side * 4);
    for (auto _ : state) {
        cairo_set_source_surface(paper.get(), source, 5, 5);
        cairo_paint(paper.get());
    }
    cairo_surface_destroy(source);
}

}  // namespace

BENCHMARK_CAPTURE(picture_ours, small, 16)->Name("picture 16 by 16|ours");
BENCHMARK_CAPTURE(picture_cairo, small, 16)->Name("picture 16 by 16|cairo");
BENCHMARK_CAPTURE(picture_ours, large, 500)->Name("picture 500 by 500|ours");
BENCHMARK_CAPTURE(picture_cairo, large, 500)->Name("picture 500 by 500|cairo");
BENCHMARK_CAPTURE(fill_ours, small, 16, 16)->Name("fill 16 by 16|ours");
BENCHMARK_CAPTURE(fill_cairo, small, 16, 16)->Name("fill 16 by 16|cairo");
BENCHMARK_CAPTURE(fill_ours, large, 600, 400)->Name("fill 600 by 400|ours");
BENCHMARK_CAPTURE(fill_cairo, large, 600, 400)->Name("fill 600 by 400|cairo");
BENCHMARK(copy_ours)->Name("copy 800 by 600|ours");
BENCHMARK(copy_cairo)->Name("copy 800 by 600|cairo");
BENCHMARK(repaint_ours)->Name("write 30 labels again|ours");
BENCHMARK(repaint_cairo)->Name("write 30 labels again|pango");
BENCHMARK(scroll_ours)->Name("write 30 new lines|ours");
BENCHMARK(scroll_cairo)->Name("write 30 new lines|pango");
