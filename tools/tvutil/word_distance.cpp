#include "tools/tvutil/word_distance.h"

#include <algorithm>
#include <cctype>

namespace tool {
namespace {

constexpr std::size_t kLongestWord = 64;

bool is_same(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before_last(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::swap(before_last, last);
        std::swap(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1,
                               last[j - 1] + (is_same(a[i - 1], b[j - 1]) ? 0U : 1U)});
            if (i > 1 && j > 1 && is_same(a[i - 1], b[j - 2]) && is_same(a[i - 2], b[j - 1])) {
                row[j] = std::min(row[j], before_last[j - 2] + 1);
            }
        }
    }
    return row[b.size()];
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string>& candidates) {
    if (word.size() > kLongestWord) return {};
    std::string best;
    auto least = std::max<std::size_t>(word.size() / 3 + 1, 2);  // this far away it is another word
    for (const auto& candidate : candidates) {
        const bool is_beginning = word.size() > 1 && candidate.starts_with(word);
        const auto steps = is_beginning ? 1 : distance(word, candidate);
        if (steps >= least || steps >= candidate.size()) continue;
        least = steps;
        best = candidate;
    }
    return best;
}

}  // namespace tool
