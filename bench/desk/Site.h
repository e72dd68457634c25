// Site.h: a large installation, made by SQL that every kind of store takes.
#ifndef ORVO_BENCH_DESK_SITE_H
#define ORVO_BENCH_DESK_SITE_H

#include <string>

namespace orvo::bench {

struct SiteSize {
    int resources = 1000000;
    int desktops = 1000; ///< "desk1" and so on, «Пульт 1»
    int elements = 500; ///< of desk1, in folders of 25, "element1_1" and so on; others have a tenth
};

/// The desktop that has the most elements.
inline constexpr char siteDesktop[] = "desk1";

/// Ends the program with the text unless it holds.
void must(bool done, const std::string& what);
/// Makes the store and fills it: a hundred icons, too, which a third of the elements bear.
void makeSqliteSite(const std::string& path, const SiteSize& size);
void makePostgresSite(const std::string& url, const SiteSize& size);

} // namespace orvo::bench

#endif
