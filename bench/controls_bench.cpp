// Controls beside Qt's widgets, both without a screen: a key in a long text, painted.
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/simulated_input.h"

#include <benchmark/benchmark.h>

#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <string>

#include "bench/support/widgets.h"

namespace {

using bench::application;
using bench::run_dry;

constexpr int kUnits = 100000;
constexpr int kWidth = 600;
constexpr int kHeight = 400;

// Lines of 80 characters, or one of all.
std::u16string long_text(bool is_one_line) {
    std::u16string text;
    while (text.size() < kUnits) {
        text += u"seven words that a person may have typed, and as many to fill the line up to 78";
        if (!is_one_line) text += u"\r\n";
    }
    return text;
}

// Words of one to twelve letters, as they come.
std::u16string long_prose() {
    std::u16string text;
    for (unsigned random = 1; text.size() < kUnits;) {
        random = random * 1103515245 + 12345;
        text.append(1 + (random >> 16) % 12, static_cast<char16_t>(u'a' + (random >> 24) % 26));
        text += u' ';
    }
    return text;
}

void key_ours(benchmark::State& state, DWORD style, const std::u16string& text) {
    auto* const top = bench::open_window(kWidth, kHeight);
    auto* const edit = CreateWindowExW(0, u"Edit", u"", style | WS_BORDER | WS_CHILD | WS_VISIBLE,
                                       0, 0, kWidth, kHeight, top, nullptr, nullptr, nullptr);
    SendMessageW(edit, EM_LIMITTEXT, 0, 0);
    SetWindowTextW(edit, text.c_str());
    SetFocus(edit);
    SendMessageW(edit, EM_SETSEL, kUnits / 2, kUnits / 2);
    SendMessageW(edit, EM_SCROLLCARET, 0, 0);
    run_dry();
    const auto before = GetWindowTextLengthW(edit);
    for (auto _ : state) {
        tvutil2::type_key('A', u"a");
        run_dry();
    }
    const auto typed = GetWindowTextLengthW(edit) - before;
    if (typed != static_cast<int>(state.iterations())) state.SkipWithError("not all was typed");
    DestroyWindow(top);
}

void key_in_lines_ours(benchmark::State& state) {
    key_ours(state, ES_MULTILINE | ES_AUTOVSCROLL | WS_VSCROLL, long_text(false));
}
BENCHMARK(key_in_lines_ours)->Name("a key in 100,000 characters in lines|ours");
void key_in_one_line_ours(benchmark::State& state) {
    key_ours(state, ES_AUTOHSCROLL, long_text(true));
}
BENCHMARK(key_in_one_line_ours)->Name("a key in one line of 100,000 characters|ours");
// One paragraph that wraps; then one whose rows are all alike, so that a word that goes down a row
// takes one down in every row below.
void key_in_paragraph_ours(benchmark::State& state) {
    key_ours(state, ES_MULTILINE | ES_AUTOVSCROLL | WS_VSCROLL, long_prose());
}
BENCHMARK(key_in_paragraph_ours)->Name("a key in 100,000 characters that wrap|ours");
void key_in_equal_rows_ours(benchmark::State& state) {
    key_ours(state, ES_MULTILINE | ES_AUTOVSCROLL | WS_VSCROLL, long_text(true));
}
BENCHMARK(key_in_equal_rows_ours)->Name("a key in 100,000 that wrap alike|ours");

template <class Widget>
void key_in_qt(benchmark::State& state, Widget& widget) {
    widget.resize(kWidth, kHeight);
    widget.show();
    widget.setFocus();
    application().processEvents();
    for (auto _ : state) {
        QKeyEvent down(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
        QApplication::sendEvent(&widget, &down);
        application().processEvents();
        QApplication::sendPostedEvents();
    }
}

void key_in_lines_qt(benchmark::State& state) {
    application();
    QPlainTextEdit edit;
    edit.setPlainText(QString::fromStdU16String(long_text(false)));
    auto cursor = edit.textCursor();
    cursor.setPosition(kUnits / 2);
    edit.setTextCursor(cursor);
    key_in_qt(state, edit);
}
BENCHMARK(key_in_lines_qt)->Name("a key in 100,000 characters in lines|Qt Widgets");
void key_in_one_line_qt(benchmark::State& state) {
    application();
    QLineEdit edit;
    edit.setMaxLength(10 * kUnits);
    edit.setText(QString::fromStdU16String(long_text(true)));
    edit.setCursorPosition(kUnits / 2);
    key_in_qt(state, edit);
}
BENCHMARK(key_in_one_line_qt)->Name("a key in one line of 100,000 characters|Qt Widgets");
void key_in_paragraph_qt(benchmark::State& state) {
    application();
    QPlainTextEdit edit;
    edit.setPlainText(QString::fromStdU16String(long_prose()));
    auto cursor = edit.textCursor();
    cursor.setPosition(kUnits / 2);
    edit.setTextCursor(cursor);
    key_in_qt(state, edit);
}
BENCHMARK(key_in_paragraph_qt)->Name("a key in 100,000 characters that wrap|Qt Widgets");

}  // namespace
