// Support.h: what the benchmarks of the stores share.
#ifndef ORVO_BENCH_STORE_SUPPORT_H
#define ORVO_BENCH_STORE_SUPPORT_H

#include "platform/store/Store.h"

#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvo::bench {

/// Freed memory stays with the process, so that after the first round both sides write to memory
/// that was touched before.
void keepMemory();
/// The same for memory that goes back to the system as soon as it is free: the system has as much
/// of it at hand as a fetch takes. In a virtual machine it may have to ask the host for each page
/// otherwise, which takes longer than the fetch. To be called before each measured fetch.
void touchMemory();
double seconds(const std::function<void()>& work);
double median(std::vector<double> values);
/// Ends the program with the text unless it holds.
void check(bool ok, const std::string& what);
/// How often a second, over a fifth of one.
double rate(const std::function<void()>& write);

/// Fills MenuResource: nine fields, records of about 200 bytes, Cyrillic captions.
void fill(store::Store& target, int records);
double fetchIntoRecords(store::Store& source, int records);
/// The same through Qt's SQL driver, forward only, with every value read.
double fetchThroughQt(const char* driver, const QString& database, const QString& host,
                      const QString& user, int records);

/// A thousand records, and an update of one of them.
void insertForUpdates(store::Store& target);
void updateOne(store::Store& target, int number);

/// A stored file of 200 MiB in and out, each in a process of its own. No store may be open.
void benchLargeFile(const std::function<std::unique_ptr<store::Store>()>& openStore);

} // namespace orvo::bench

#endif
