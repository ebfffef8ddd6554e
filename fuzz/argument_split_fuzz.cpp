// Command lines that nobody would write.
//
// Laws: the count is the list's; no item is longer than the line; what is quoted and escaped by the
// rules comes back as it was.
#include "tvutil2/data/command_line.h"
#include "tvutil2/framework/collections.h"

#include "fuzz/fuzz_input.h"

namespace {

std::u16string quoted(const std::u16string& item) {
    std::u16string out = u"\"";
    for (const auto c : item) {
        if (c == u'"' || c == u'\\') out += u'\\';
        out += c;
    }
    return out + u'"';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto line = fuzz::widened({reinterpret_cast<const char*>(data), size});
    CStringList items;
    const int count = ArgumentSplit(CString(std::u16string_view(line)), items, CString());
    fuzz::require(count == items.GetCount());
    std::u16string again;
    for (POSITION at = items.GetHeadPosition(); at != nullptr;) {
        const auto& item = items.GetNext(at);
        fuzz::require(static_cast<std::size_t>(item.GetLength()) <= line.size());
        again += quoted(std::u16string(item.View())) + u' ';
    }
    CStringList second;
    ArgumentSplit(CString(std::u16string_view(again)), second, CString());
    fuzz::require(second.GetCount() == count);
    POSITION left = items.GetHeadPosition();
    POSITION right = second.GetHeadPosition();
    while (left != nullptr) fuzz::require(items.GetNext(left) == second.GetNext(right));
    return 0;
}
