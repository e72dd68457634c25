#include "apps/admin/Suggestion.h"

#include "apps/admin/Output.h"
#include "frame/StdText.h"

#include <QString>

#include <algorithm>

namespace orvo::admin {

namespace {

/// Letters to insert, delete, replace or swap with their neighbour.
int distance(const QString& a, const QString& b) {
    const int width = b.size() + 1;
    std::vector<int> before(static_cast<size_t>(width)), last(before), row(before);
    const auto at = [](std::vector<int>& in, int i) -> int& { return in[static_cast<size_t>(i)]; };
    for (int j = 0; j < width; ++j)
        at(last, j) = j;
    for (int i = 1; i <= a.size(); ++i) {
        at(row, 0) = i;
        for (int j = 1; j < width; ++j) {
            at(row, j) = std::min({at(last, j) + 1, at(row, j - 1) + 1,
                                   at(last, j - 1) + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                at(row, j) = std::min(at(row, j), at(before, j - 2) + 1);
        }
        before.swap(last);
        last.swap(row);
    }
    return at(last, width - 1);
}

} // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& present) {
    constexpr int longest = 100; // a longer word is no slip of the finger
    const QString wanted = QString::fromStdString(word).toCaseFolded();
    if (wanted.size() < 2 || wanted.size() > longest)
        return {};
    int best = wanted.size() >= 6 ? 2 : 1;
    const std::string* found = nullptr;
    for (const std::string& one : present) {
        const QString text = QString::fromStdString(one).toCaseFolded();
        if (std::abs(text.size() - wanted.size()) > best)
            continue;
        const int far = distance(wanted, text);
        if (far < best || (far == best && !found)) {
            best = far;
            found = &one;
        }
    }
    return found ? StdText::tr("; может быть, «") + cell(*found) + StdText::tr("»?")
                 : std::string();
}

} // namespace orvo::admin
