// GIFs beside giflib, which decodes them, and beside gdk-pixbuf's own animations: the walk through
// the blocks, the loading of an animation, and what playing it costs.
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/ui/picture.h"

#include <benchmark/benchmark.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gif_lib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <span>
#include <string>
#include <vector>

namespace {

constexpr int kSide = 500;

// Frames of a picture that moves, with 64 colours, as animations of screens and drawings have them.
std::string animation(int frames) {
    std::string data;
    const auto append = [](GifFileType* file, const GifByteType* bytes, int size) {
        static_cast<std::string*>(file->UserData)
            ->append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
        return size;
    };
    int error = 0;
    auto* const file = EGifOpen(&data, append, &error);
    EGifSetGifVersion(file, true);
    std::vector<GifColorType> colors(64);
    for (unsigned i = 0; i < 64; ++i) {
        colors[i] = {static_cast<GifByteType>(i * 4), static_cast<GifByteType>(255 - i * 3),
                     static_cast<GifByteType>(i * 7)};
    }
    auto* const map = GifMakeMapObject(64, colors.data());
    EGifPutScreenDesc(file, kSide, kSide, 6, 0, map);
    GifFreeMapObject(map);
    std::vector<GifPixelType> row(kSide);
    for (int frame = 0; frame < frames; ++frame) {
        const GifByteType control[] = {4, 5, 0, 0};
        EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, sizeof control, control);
        EGifPutImageDesc(file, 0, 0, kSide, kSide, false, nullptr);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const int value = (x + frame) * (x + frame) / 97 + y * y / 131 + (x * y) / 211;
                row[static_cast<std::size_t>(x)] = static_cast<GifPixelType>(value & 63);
            }
            EGifPutLine(file, row.data(), kSide);
        }
    }
    EGifCloseFile(file, &error);
    return data;
}

const std::string& small_file() {
    static const auto data = animation(40);
    return data;
}

// 100 MB: the same frames again and again.
const std::string& large_file() {
    static const auto data = [] {
        const auto& once = small_file();
        constexpr std::size_t kFront = 13 + 3 * 64;
        auto all = once.substr(0, kFront);
        const auto frames = once.substr(kFront, once.size() - kFront - 1);
        while (all.size() < 100'000'000) all += frames;
        return all + ';';
    }();
    return data;
}

std::span<const BYTE> bytes_of(const std::string& text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

void walk_ours(benchmark::State& state) {
    const auto& data = large_file();
    for (auto _ : state) {
        tvutil2::GifParser parser(bytes_of(data));
        int frames = 0;
        while (parser.skip_next_graphic()) ++frames;
        benchmark::DoNotOptimize(frames);
    }
}

void decode_giflib(benchmark::State& state) {
    const auto& data = large_file();
    for (auto _ : state) {
        auto left = bytes_of(data);
        const auto read = [](GifFileType* file, GifByteType* to, int size) {
            auto& rest = *static_cast<std::span<const BYTE>*>(file->UserData);
            const auto count = std::min(rest.size(), static_cast<std::size_t>(size));
            std::memcpy(to, rest.data(), count);
            rest = rest.subspan(count);
            return static_cast<int>(count);
        };
        int error = 0;
        auto* const file = DGifOpen(&left, read, &error);
        std::vector<GifPixelType> row(kSide);
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        while (DGifGetRecordType(file, &type) != GIF_ERROR && type != TERMINATE_RECORD_TYPE) {
            if (type == IMAGE_DESC_RECORD_TYPE) {
                DGifGetImageDesc(file);
                for (int y = 0; y < kSide; ++y) DGifGetLine(file, row.data(), kSide);
                continue;
            }
            int code = 0;
            GifByteType* block = nullptr;
            DGifGetExtension(file, &code, &block);
            while (block != nullptr) DGifGetExtensionNext(file, &block);
        }
        DGifCloseFile(file, &error);
    }
}

// A control on a window that is painted.
class Shown {
  public:
    Shown() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        m_parent.CreateEx(0, nullptr, u"picture", WS_POPUP | WS_VISIBLE, {0, 0, kSide, kSide},
                          nullptr, 0);
        picture.Create(u"", WS_VISIBLE, {0, 0, 1, 1}, &m_parent, 1);
        const auto& data = small_file();
        memory = GlobalAlloc(GMEM_MOVEABLE, data.size());
        std::memcpy(GlobalLock(memory), data.data(), data.size());
        GlobalUnlock(memory);
    }
    ~Shown() { GlobalFree(memory); }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

    bool load() { return picture.Load(memory, static_cast<DWORD>(small_file().size())) != FALSE; }

    CPictureEx picture;
    HGLOBAL memory;

  private:
    CWnd m_parent;
};

void load_ours(benchmark::State& state) {
    Shown shown;
    for (auto _ : state) {
        if (!shown.load()) state.SkipWithError("not loaded");
    }
}

// Every frame decoded once, as ours are.
void load_pixbuf(benchmark::State& state) {
    const auto data = bytes_of(small_file());
    for (auto _ : state) {
        auto* const loader = gdk_pixbuf_loader_new();
        gdk_pixbuf_loader_write(loader, data.data(), data.size(), nullptr);
        gdk_pixbuf_loader_close(loader, nullptr);
        GTimeVal time{0, 0};
        auto* const frames =
            gdk_pixbuf_animation_get_iter(gdk_pixbuf_loader_get_animation(loader), &time);
        for (int frame = 0; frame < 40; ++frame) {
            benchmark::DoNotOptimize(gdk_pixbuf_animation_iter_get_pixbuf(frames));
            g_time_val_add(&time, 50000);
            gdk_pixbuf_animation_iter_advance(frames, &time);
        }
        g_object_unref(frames);
        g_object_unref(loader);
    }
}

// Two seconds at the 20 frames a second that are the most that there are; what 50 would take of a
// core is reckoned from the processor's time.
void play_ours(benchmark::State& state) {
    Shown shown;
    shown.load();
    for (auto _ : state) {
        const auto before = std::clock();
        shown.picture.Draw();
        const auto timer = SetTimer(nullptr, 0, 2000, nullptr);
        MSG message{};
        while (GetMessageW(&message, nullptr, 0, 0) && message.message != WM_TIMER) {
            DispatchMessageW(&message);
        }
        KillTimer(nullptr, timer);
        shown.picture.Stop();
        const auto seconds = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
        state.counters["amount"] = seconds / 2 * 100 * 50 / 20;
    }
}

}  // namespace

BENCHMARK(walk_ours)->Name("100 MB of GIF walked|ours")->Unit(benchmark::kMillisecond);
BENCHMARK(decode_giflib)
    ->Name("100 MB of GIF walked|giflib, which decodes")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(load_ours)->Name("load 40 frames|ours")->Unit(benchmark::kMillisecond);
BENCHMARK(load_pixbuf)->Name("load 40 frames|gdk-pixbuf")->Unit(benchmark::kMillisecond);
BENCHMARK(play_ours)
    ->Name("play 500 by 500 at 50 a second, % of a core|ours")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
