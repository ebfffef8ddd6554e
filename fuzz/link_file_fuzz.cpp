// A shortcut that somebody else wrote: it is a link or it isn't, and a link is the same when it is
// written again.
#include "tvutil2/platform/files/link_file.h"

#include "fuzz/fuzz_input.h"

namespace {

void comes_back(const tvutil2::LinkFields& fields) {
    const auto again = tvutil2::parse_link(tvutil2::link_text(fields, "name"));
    fuzz::require(again && again->path == fields.path && again->icon == fields.icon &&
                  again->description == fields.description &&
                  again->arguments == fields.arguments && again->hot_key == fields.hot_key &&
                  again->icon_index == fields.icon_index);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto fields = tvutil2::parse_link(text)) comes_back(*fields);
    tvutil2::LinkFields fields;
    fields.path = u"C:\\x";
    fields.description = fuzz::wide_text(data, size);
    fields.arguments = fuzz::widened(text);
    comes_back(fields);
    return 0;
}
