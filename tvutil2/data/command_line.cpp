#include "tvutil2/data/command_line.h"

#include "tvutil2/framework/collections.h"

int ArgumentSplit(const CString& args, CStringList& out, const CString& first) {
    if (!first.IsEmpty()) out.AddTail(first);
    CString token;
    bool in_quote = false;
    bool escaped = false;
    const auto finish = [&] {
        out.AddTail(token);
        token.Empty();
    };
    for (const auto c : args.View()) {
        if (c == u'"' && !escaped) {
            if (in_quote) finish();
            in_quote = !in_quote;
        } else if (c == u'\\' && !escaped) {
            escaped = true;
        } else if (c == u'"' || c == u'\\') {
            token += c;
            escaped = false;
        } else if (c == u' ' && !in_quote) {
            token.Trim();
            escaped = false;
            if (!token.IsEmpty()) finish();
        } else {
            token += c;
        }
    }
    if (!token.IsEmpty()) finish();
    return out.GetCount();
}
