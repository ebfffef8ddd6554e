// A dialog beside Qt's, both without a screen: thirty controls built from a template, laid out,
// painted and closed. A list of 100,000 rows that is scrolled (60 frames a second in half a core:
// 8.3 ms each). And windows of a thousand and of ten thousand controls, which tell by their ratio
// whether something grows faster than they do.
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <benchmark/benchmark.h>

#include <QAbstractTableModel>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeView>
#include <cstdlib>
#include <string>

#include "bench/support/widgets.h"
#include "tests/platform/window/dialogs/template_bytes.h"

namespace {

using bench::application;
using bench::run_dry;

constexpr int kRows = 10;
constexpr int kListRows = 100000;
constexpr int kWidth = 700;
constexpr int kHeight = 500;

// In rows: a label, a field, and a button of one kind or another.
std::string dialog_template() {
    constexpr WORD kButton = 0x80;
    constexpr WORD kEdit = 0x81;
    constexpr WORD kStatic = 0x82;
    tests::TemplateBytes dialog(u"Settings", WS_POPUP | WS_CAPTION | WS_SYSMENU, 260, 200);
    for (int row = 0; row < kRows; ++row) {
        const auto id = static_cast<DWORD>(100 + row * 3);
        const auto y = 7 + row * 18;
        dialog.add(kStatic, id, 0, u"&Name of something", 7, y, 80, 10);
        dialog.add(kEdit, id + 1, WS_BORDER | WS_TABSTOP, u"its value", 90, y, 80, 14);
        dialog.add(kButton, id + 2, (row % 2 == 0 ? BS_AUTOCHECKBOX : BS_PUSHBUTTON) | WS_TABSTOP,
                   u"&Choose", 175, y, 70, 14);
    }
    return dialog.bytes();
}

// A program has a main window besides. Without one, each dialog is the first window with a title:
// it makes the process known to others, and its end takes that back.
void dialog_ours(benchmark::State& state, bool is_alone) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    auto* const main_window =
        is_alone ? nullptr
                 : CreateWindowExW(0, u"#32770", u"Main", WS_POPUP | WS_CAPTION | WS_VISIBLE, 0, 0,
                                   kWidth, kHeight, nullptr, nullptr, nullptr, nullptr);
    const auto bytes = dialog_template();
    const DLGPROC procedure = [](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR {
        return message == WM_INITDIALOG ? TRUE : FALSE;
    };
    for (auto _ : state) {
        auto* const dialog =
            CreateDialogIndirectParamW(nullptr, bytes.data(), nullptr, procedure, 0);
        ShowWindow(dialog, SW_SHOW);
        run_dry();
        DestroyWindow(dialog);
    }
    if (main_window != nullptr) DestroyWindow(main_window);
}
BENCHMARK_CAPTURE(dialog_ours, beside, false)->Name("a dialog of 30 controls|ours");
BENCHMARK_CAPTURE(dialog_ours, alone, true)->Name("a dialog of 30 controls, alone|ours");

void dialog_qt(benchmark::State& state) {
    application();
    for (auto _ : state) {
        QDialog dialog;
        dialog.setWindowTitle("Settings");
        QGridLayout layout(&dialog);
        for (int row = 0; row < kRows; ++row) {
            layout.addWidget(new QLabel("&Name of something"), row, 0);
            layout.addWidget(new QLineEdit("its value"), row, 1);
            QWidget* const button = row % 2 == 0
                                        ? static_cast<QWidget*>(new QCheckBox("&Choose"))
                                        : static_cast<QWidget*>(new QPushButton("&Choose"));
            layout.addWidget(button, row, 2);
        }
        dialog.show();
        QApplication::processEvents();
    }
}
BENCHMARK(dialog_qt)->Name("a dialog of 30 controls|Qt Widgets");
BENCHMARK(dialog_qt)->Name("a dialog of 30 controls, alone|Qt Widgets");

std::u16string cell(int row, int column) {
    const auto text = "cell " + std::to_string(row) + " of column " + std::to_string(column);
    return {text.begin(), text.end()};
}

// Three rows each time, painted.
void scroll_ours(benchmark::State& state) {
    auto* const top = bench::open_window(kWidth, kHeight);
    auto* const list = CreateWindowExW(0, WC_LISTVIEWW, u"", LVS_REPORT | WS_CHILD | WS_VISIBLE, 0,
                                       0, kWidth, kHeight, top, nullptr, nullptr, nullptr);
    for (int column = 0; column < 3; ++column) {
        std::u16string title = u"Column";
        const LVCOLUMNW added{LVCF_TEXT | LVCF_WIDTH, 0, 220, title.data(), 0, 0};
        SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(column),
                     reinterpret_cast<LPARAM>(&added));
    }
    for (int row = 0; row < kListRows; ++row) {
        for (int column = 0; column < 3; ++column) {
            auto text = cell(row, column);
            LVITEMW item{};
            item.mask = LVIF_TEXT;
            item.iItem = row;
            item.iSubItem = column;
            item.pszText = text.data();
            SendMessageW(list, column == 0 ? LVM_INSERTITEMW : LVM_SETITEMW, 0,
                         reinterpret_cast<LPARAM>(&item));
        }
    }
    run_dry();
    for (auto _ : state) {
        for (int line = 0; line < 3; ++line) SendMessageW(list, WM_VSCROLL, SB_LINEDOWN, 0);
        run_dry();
    }
    DestroyWindow(top);
}
BENCHMARK(scroll_ours)->Name("a notch in a list of 100,000 rows|ours");

class Cells : public QAbstractTableModel {
  public:
    int rowCount(const QModelIndex& /*parent*/) const override { return kListRows; }
    int columnCount(const QModelIndex& /*parent*/) const override { return 3; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole) return {};
        return QString::fromStdU16String(cell(index.row(), index.column()));
    }
};

void scroll_qt(benchmark::State& state) {
    application();
    Cells cells;
    QTreeView list;
    list.setUniformRowHeights(true);
    list.setRootIsDecorated(false);
    list.setModel(&cells);
    for (int column = 0; column < 3; ++column) list.setColumnWidth(column, 220);
    list.resize(kWidth, kHeight);
    list.show();
    QApplication::processEvents();
    for (auto _ : state) {
        auto* const bar = list.verticalScrollBar();
        bar->setValue(bar->value() + 3);
        QApplication::processEvents();
    }
}
BENCHMARK(scroll_qt)->Name("a notch in a list of 100,000 rows|Qt Widgets");

// Half of them labels, half buttons, in rows of a hundred.
constexpr int kManyColumns = 100;
constexpr int kManyWidth = 20;
constexpr int kManyHeight = 12;
constexpr int kManyGap = 2;

void many_ours(benchmark::State& state, int count, DWORD style) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    for (auto _ : state) {
        auto* const top = CreateWindowExW(
            0, u"#32770", u"Many", WS_POPUP | WS_CAPTION | style, 0, 0, kManyColumns * kManyWidth,
            count / kManyColumns * kManyHeight + 50, nullptr, nullptr, nullptr, nullptr);
        for (int i = 0; i < count; ++i) {
            CreateWindowExW(0, i % 2 == 0 ? u"Static" : u"Button", u"a", WS_CHILD | WS_VISIBLE,
                            i % kManyColumns * kManyWidth, i / kManyColumns * kManyHeight,
                            kManyWidth - kManyGap, kManyHeight - kManyGap, top, nullptr, nullptr,
                            nullptr);
        }
        ShowWindow(top, SW_SHOW);
        run_dry();
        DestroyWindow(top);
    }
}
BENCHMARK_CAPTURE(many_ours, thousand, 1000, 0)->Name("1,000 controls in one window|ours");
BENCHMARK_CAPTURE(many_ours, ten_thousand, 10000, 0)->Name("10,000 controls in one window|ours");
BENCHMARK_CAPTURE(many_ours, kept_out, 10000, WS_CLIPCHILDREN)
    ->Name("10,000 controls that their window keeps out of|ours");

void many_qt(benchmark::State& state, int count) {
    application();
    for (auto _ : state) {
        QDialog dialog;
        dialog.resize(kManyColumns * kManyWidth, count / kManyColumns * kManyHeight + 50);
        for (int i = 0; i < count; ++i) {
            auto* const widget = i % 2 == 0 ? static_cast<QWidget*>(new QLabel("a", &dialog))
                                            : new QPushButton("a", &dialog);
            widget->setGeometry(i % kManyColumns * kManyWidth, i / kManyColumns * kManyHeight,
                                kManyWidth - kManyGap, kManyHeight - kManyGap);
        }
        dialog.show();
        QApplication::processEvents();
    }
}
BENCHMARK_CAPTURE(many_qt, thousand, 1000)->Name("1,000 controls in one window|Qt Widgets");
BENCHMARK_CAPTURE(many_qt, ten_thousand, 10000)->Name("10,000 controls in one window|Qt Widgets");
BENCHMARK_CAPTURE(many_qt, kept_out, 10000)
    ->Name("10,000 controls that their window keeps out of|Qt Widgets");

}  // namespace
