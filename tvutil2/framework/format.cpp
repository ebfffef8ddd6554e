#include "tvutil2/framework/format.h"

#include "tvutil2/framework/format_output.h"
#include "tvutil2/framework/narrow_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kLargest = 65536;

// What stands between "%" and its conversion.
struct Directive {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    bool has_precision = false;
    int width = 0;
    int precision = 0;
    int halvings = 0;  // of the width of an integer: one for each "h"
    char16_t conversion = 0;
};

// The arguments in their order.
class Reader {
  public:
    explicit Reader(FormatArguments arguments) : m_rest(arguments) {}

    // Null when there are no more.
    const FormatArgument* next() {
        if (m_rest.empty()) return nullptr;
        const auto* argument = &m_rest.front();
        m_rest = m_rest.subspan(1);
        return argument;
    }

  private:
    FormatArguments m_rest;
};

bool is_digit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

bool has_flag(Directive& d, char16_t c) {
    switch (c) {
        case u'-':
            return d.left = true;
        case u'+':
            return d.plus = true;
        case u' ':
            return d.space = true;
        case u'#':
            return d.alternate = true;
        case u'0':
            return d.zero = true;
        default:
            return false;
    }
}

// A width or precision: digits, or "*" for the next argument, which may be negative.
int take_number(std::u16string_view& text, Reader& arguments) {
    if (text.starts_with(u'*')) {
        text.remove_prefix(1);
        const auto* argument = arguments.next();
        if (argument == nullptr || argument->kind() != FormatArgument::Kind::integer) return 0;
        const auto value = static_cast<std::int32_t>(argument->integer());
        return std::clamp(value, -kLargest, kLargest);
    }
    int number = 0;
    while (!text.empty() && is_digit(text.front())) {
        number = std::min(number * 10 + (text.front() - u'0'), kLargest);
        text.remove_prefix(1);
    }
    return number;
}

void skip_prefixes(std::u16string_view& text, Directive& d) {
    for (; !text.empty(); text.remove_prefix(1)) {
        switch (text.front()) {
            case u'h':
                ++d.halvings;
                break;
            case u'l':
            case u'w':
            case u'z':
            case u't':
            case u'j':
            case u'L':
                break;
            case u'I':
                if (text.starts_with(u"I64") || text.starts_with(u"I32")) text.remove_prefix(2);
                break;
            default:
                return;
        }
    }
}

// Reads a directive from behind its "%"; the conversion stays 0 when the text ends before it.
Directive take_directive(std::u16string_view& text, Reader& arguments) {
    Directive d;
    while (!text.empty() && has_flag(d, text.front())) text.remove_prefix(1);
    d.width = take_number(text, arguments);
    if (d.width < 0) {
        d.left = true;
        d.width = -d.width;
    }
    if (text.starts_with(u'.')) {
        text.remove_prefix(1);
        const int precision = take_number(text, arguments);
        d.has_precision = precision >= 0;
        d.precision = std::max(precision, 0);
    }
    skip_prefixes(text, d);
    if (!text.empty()) {
        d.conversion = text.front();
        text.remove_prefix(1);
    }
    return d;
}

std::size_t missing(const Directive& d, std::size_t length) {
    const auto width = static_cast<std::size_t>(d.width);
    return width > length ? width - length : 0;
}

void put_text(FormatOutput& out, const Directive& d, std::u16string_view text) {
    const auto padding = missing(d, text.size());
    if (!d.left) out.put(padding, u' ');
    out.put(text);
    if (d.left) out.put(padding, u' ');
}

// Sign or base, zeros and digits, in that order, in the field.
template <class Digits>
void put_number(FormatOutput& out, const Directive& d, std::string_view prefix, std::size_t zeros,
                Digits digits) {
    const auto length = prefix.size() + zeros + digits.size();
    auto padding = missing(d, length);
    auto* at = out.take(length + padding);
    if (d.zero && !d.left) zeros += std::exchange(padding, 0);
    if (!d.left) at = std::fill_n(at, padding, u' ');
    for (const char c : prefix) *at++ = static_cast<char16_t>(c);
    at = std::fill_n(at, zeros, u'0');
    for (const auto c : digits) *at++ = static_cast<char16_t>(c);
    if (d.left) std::fill_n(at, padding, u' ');
}

std::string_view sign_of(const Directive& d, bool negative) {
    return negative ? "-" : d.plus ? "+" : d.space ? " " : "";
}

void make_upper(char* first, char* last) {
    for (; first != last; ++first) {
        if (*first >= 'a' && *first <= 'z') *first = static_cast<char>(*first - 32);
    }
}

// Digits of an integer, in the base of the conversion, written from the right.
class Digits {
  public:
    Digits(std::uint64_t value, char16_t conversion) {
        switch (conversion) {
            case u'x':
                write_bits(value, 4, u'a' - 10);
                break;
            case u'X':
                write_bits(value, 4, u'A' - 10);
                break;
            case u'o':
                write_bits(value, 3, 0);
                break;
            default:
                write_decimal(value);
        }
    }
    Digits(const Digits&) = delete;
    Digits& operator=(const Digits&) = delete;

    [[nodiscard]] std::u16string_view view() const {
        return {m_first, static_cast<std::size_t>(std::end(m_text) - m_first)};
    }

  private:
    void write_decimal(std::uint64_t value) {
        // Most numbers have 32 bits, which divide much faster.
        for (; value > 0xFFFFFFFF; value /= 10) *--m_first = digit(value % 10);
        auto small = static_cast<std::uint32_t>(value);
        do {
            *--m_first = digit(small % 10);
            small /= 10;
        } while (small != 0);
    }
    void write_bits(std::uint64_t value, unsigned bits, int letter) {
        do {
            const auto part = static_cast<int>(value & ((1U << bits) - 1));
            *--m_first = static_cast<char16_t>(part + (part < 10 ? u'0' : letter));
            value >>= bits;
        } while (value != 0);
    }
    static char16_t digit(std::uint64_t value) { return static_cast<char16_t>(u'0' + value); }

    char16_t m_text[22];  // octal digits of 64 bits
    char16_t* m_first = std::end(m_text);
};

void put_integer(FormatOutput& out, Directive d, const FormatArgument& argument) {
    // Narrower types come as int, as they do through an ellipsis, until "h" says otherwise.
    const std::size_t least = d.halvings == 0 ? 4 : d.halvings == 1 ? 2 : 1;
    const auto size = d.halvings == 0 ? std::max(argument.size(), least) : least;
    const auto unused = static_cast<unsigned>(64 - 8 * size);
    const bool is_decimal = d.conversion == u'd' || d.conversion == u'i';
    auto value = argument.integer() << unused;
    const bool negative = is_decimal && static_cast<std::int64_t>(value) < 0;
    value = is_decimal ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value) >> unused)
                       : value >> unused;
    if (negative) value = 0 - value;

    const Digits digits(value, d.conversion);
    auto shown = digits.view();
    if (d.has_precision) {
        d.zero = false;
        if (value == 0 && d.precision == 0) shown = {};
    }
    const auto wanted = static_cast<std::size_t>(d.precision);
    auto zeros = wanted > shown.size() ? wanted - shown.size() : 0;
    std::string_view prefix = is_decimal ? sign_of(d, negative) : "";
    if (d.alternate && value != 0 && d.conversion == u'x') prefix = "0x";
    if (d.alternate && value != 0 && d.conversion == u'X') prefix = "0X";
    if (d.alternate && d.conversion == u'o' && zeros == 0 && !shown.starts_with(u'0')) zeros = 1;
    put_number(out, d, prefix, zeros, shown);
}

// A double in the notation of a conversion, without its sign. Short ones need no heap.
class RealText {
  public:
    RealText(double value, const Directive& d) {
        const auto precision = d.has_precision ? d.precision : 6;
        // Digits before the point, the point, the exponent and the room that "#" asks for.
        const auto room = static_cast<std::size_t>(precision) + 330;
        if (room > sizeof m_short) {
            m_long.resize(room);
            m_text = m_long.data();
        }
        m_end = m_text + room;
        write(value, d, precision);
        if (d.conversion < u'a') make_upper(m_text, m_text + m_length);
    }
    RealText(const RealText&) = delete;
    RealText& operator=(const RealText&) = delete;

    [[nodiscard]] std::string_view view() const { return {m_text, m_length}; }

  private:
    void write(double value, const Directive& d, int precision) {
        switch (d.conversion | 0x20) {
            case u'e':
                return put(value, std::chars_format::scientific, precision, d.alternate);
            case u'f':
                return put(value, std::chars_format::fixed, precision, d.alternate);
            case u'g':
                if (d.alternate) return put_general(value, std::max(precision, 1));
                return put(value, std::chars_format::general, precision, false);
            default:
                if (d.has_precision)
                    return put(value, std::chars_format::hex, precision, d.alternate);
                m_length =
                    length_to(std::to_chars(m_text, m_end, value, std::chars_format::hex).ptr);
                if (d.alternate) add_point();
        }
    }

    void put(double value, std::chars_format format, int precision, bool with_point) {
        m_length = length_to(std::to_chars(m_text, m_end, value, format, precision).ptr);
        if (with_point) add_point();
    }

    // "%#g" keeps the zeros at the end: the choice between the two notations is made by hand.
    void put_general(double value, int precision) {
        put(value, std::chars_format::scientific, precision - 1, false);
        const auto text = view();
        int exponent = 0;
        const char* digits = text.data() + text.rfind('e') + 1;
        if (*digits == '+') ++digits;
        std::from_chars(digits, text.data() + text.size(), exponent);
        if (exponent < -4 || exponent >= precision) return add_point();
        put(value, std::chars_format::fixed, precision - 1 - exponent, true);
    }

    void add_point() {
        if (view().find('.') != std::string_view::npos) return;
        const auto at = std::min(view().find_first_of("ep"), m_length);
        std::memmove(m_text + at + 1, m_text + at, m_length - at);
        m_text[at] = '.';
        ++m_length;
    }

    [[nodiscard]] std::size_t length_to(const char* end) const {
        return static_cast<std::size_t>(end - m_text);
    }

    char m_short[512];
    std::string m_long;
    char* m_text = m_short;
    char* m_end = nullptr;
    std::size_t m_length = 0;
};

void put_real(FormatOutput& out, Directive d, double value) {
    const auto sign = sign_of(d, std::signbit(value));
    if (!std::isfinite(value)) {
        d.zero = false;
        const bool upper = d.conversion < u'a';
        const auto* const name =
            std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
        return put_number(out, d, sign, 0, std::string_view(name));
    }
    std::string prefix(sign);
    if ((d.conversion | 0x20) == u'a') prefix += d.conversion == u'a' ? "0x" : "0X";
    put_number(out, d, prefix, 0, RealText(std::fabs(value), d).view());
}

// Every digit of an address, as the platform shows it.
void put_address(FormatOutput& out, Directive d, const void* pointer) {
    const Digits digits(reinterpret_cast<std::uintptr_t>(pointer), u'X');
    d.zero = false;
    put_number(out, d, "", 2 * sizeof pointer - digits.view().size(), digits.view());
}

template <class Unit>
std::basic_string_view<Unit> bounded_text(const Directive& d, const Unit* text) {
    if (!d.has_precision) return text;
    const auto most = static_cast<std::size_t>(d.precision);
    const auto* const end = std::find(text, text + most, Unit{0});
    return {text, static_cast<std::size_t>(end - text)};
}

void put_text_argument(FormatOutput& out, const Directive& d, const FormatArgument& argument) {
    if (argument.pointer() == nullptr) return put_text(out, d, bounded_text(d, u"(null)"));
    if (argument.kind() == FormatArgument::Kind::wide) {
        return put_text(out, d, bounded_text(d, argument.wide()));
    }
    put_text(out, d, from_ansi(bounded_text(d, argument.narrow())));
}

void put_character(FormatOutput& out, const Directive& d, const FormatArgument& argument) {
    if (argument.size() == 1) {
        const char byte = static_cast<char>(argument.integer());
        return put_text(out, d, from_ansi({&byte, 1}));
    }
    const auto unit = static_cast<char16_t>(argument.integer());
    put_text(out, d, {&unit, 1});
}

// What an argument is shown as when its conversion asks for something else.
void put_as_it_is(FormatOutput& out, Directive d, const FormatArgument& argument) {
    switch (argument.kind()) {
        case FormatArgument::Kind::integer:
            d.conversion = argument.is_signed() ? u'd' : u'u';
            return put_integer(out, d, argument);
        case FormatArgument::Kind::real:
            d.conversion = u'g';
            return put_real(out, d, argument.real());
        case FormatArgument::Kind::pointer:
            if (argument.pointer() != nullptr) return put_address(out, d, argument.pointer());
            [[fallthrough]];
        default:
            return put_text_argument(out, d, argument);
    }
}

// What takes an argument; a table, for each directive asks.
constexpr auto kIsConversion = [] {
    std::array<bool, 128> list{};
    for (const char16_t c : std::u16string_view(u"diuoxXcCsSpeEfFgGaA")) list[c] = true;
    return list;
}();

bool is_conversion(char16_t c) {
    return c < kIsConversion.size() && kIsConversion[c];
}

void put_argument(FormatOutput& out, const Directive& d, const FormatArgument& argument) {
    using Kind = FormatArgument::Kind;
    const auto kind = argument.kind();
    switch (d.conversion) {
        case u'd':
        case u'i':
        case u'u':
        case u'o':
        case u'x':
        case u'X':
            if (kind == Kind::integer) return put_integer(out, d, argument);
            break;
        case u'c':
        case u'C':
            if (kind == Kind::integer) return put_character(out, d, argument);
            break;
        case u'p':
            if (kind == Kind::integer) {
                return put_address(out, d, reinterpret_cast<const void*>(argument.integer()));
            }
            if (kind != Kind::real) return put_address(out, d, argument.pointer());
            break;
        case u's':
        case u'S':
            break;  // text as it is
        default:
            if (kind == Kind::real) return put_real(out, d, argument.real());
            if (kind == Kind::integer) {
                const auto value = argument.integer();
                return put_real(out, d,
                                argument.is_signed()
                                    ? static_cast<double>(static_cast<std::int64_t>(value))
                                    : static_cast<double>(value));
            }
    }
    put_as_it_is(out, d, argument);
}

void put_all(FormatOutput& out, std::u16string_view format, FormatArguments arguments) {
    Reader reader(arguments);
    while (!format.empty()) {
        // Seldom more than a few units, which are copied sooner one by one.
        std::size_t plain = 0;
        for (; plain < format.size() && format[plain] != u'%'; ++plain) out.put(format[plain]);
        format.remove_prefix(plain);
        if (format.empty()) return;
        const auto rest = format;
        format.remove_prefix(1);
        const auto d = take_directive(format, reader);
        if (is_conversion(d.conversion)) {
            if (const auto* argument = reader.next()) put_argument(out, d, *argument);
        } else if (d.conversion == u'%') {
            out.put(u'%');
        } else if (d.conversion == u'n') {
            reader.next();
        } else {
            out.put(rest.substr(0, rest.size() - format.size()));
        }
    }
}

}  // namespace

void format_to(std::u16string& out, std::u16string_view format, FormatArguments arguments) {
    FormatOutput text;
    put_all(text, format, arguments);
    out.append(text.view());
}

void format_over(std::u16string& out, std::u16string_view format, FormatArguments arguments) {
    FormatOutput text;
    put_all(text, format, arguments);
    out.assign(text.view());
}

}  // namespace tvutil2
