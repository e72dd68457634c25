// Blocks.h: the layout of reply and notification blocks, in the one place that makes them.
//
// Reply of a request (3 fields):
//   0 integer  result code: 0 success, else store::Code
//   1 text     NULL
//   2 block    success: the table, if the request has one, as MDXArrayUnPack takes it, once.
//              Failure: the server's text in UTF-8, or NULL
//
// Notification (10 fields):
//   0 text     number of the change in the log, decimal
//   1 integer  event code (OrvoEvent)
//   2 date     time of the change
//   3 text     login of the writer; empty if written by hand
//   4 text     KeyLink of the changed record
//   5 text     source: "NCI:" <table> "," <login>. Readers skip four characters and take the table
//              up to the comma
//   6 text     table
//   7 block    601, 602: the raw record, in which exactly the changed fields are marked and have
//   the
//              values after the change. NULL for 603 and for tables without a structure of their
//              own
//   8 integer  number of marked fields
//   9 text     NULL
#ifndef ORVO_PLATFORM_CLIENT_BLOCKS_H
#define ORVO_PLATFORM_CLIENT_BLOCKS_H

#include "frame/OrvoClient.h"
#include "platform/store/Store.h"

#include <map>
#include <memory>
#include <string>

namespace orvo::client {

/// Frees what the record library allocated.
struct MemFree {
    void operator()(void* block) const { MDMemFree(block); }
};

/// Gives the array a key over KeyLink as key 0 if it has no key yet. False if that failed.
bool ensureKeyLink(MDArray* array, uint32_t flags);

/// A reply without a table: success, or the failure and its text. Null if memory ran out.
MDXCliParam* makeReply(const store::Status& status = {});
/// A successful reply that carries the content of the array with its keys, and leaves the array
/// empty. Null if memory ran out.
MDXCliParam* makeReply(MDArray* content);

/// Makes notification blocks from changes. Keeps a scratch array for each table, so that a burst
/// does not build structures over and over.
class ORVOCLIENT_EXPORT NotificationMaker {
public:
    NotificationMaker();
    ~NotificationMaker();

    /// The block of a change, the caller's to hand to COrvoCliMod::messagePut or to free with
    /// mdx::paramFree. Null if memory ran out. Values that do not fit their field, or that the
    /// schema does not know, are left out: a foreign hand may have written anything.
    MDXCliParam* make(const store::Change& change);

private:
    std::map<std::string, std::unique_ptr<CMDArray>, std::less<>> m_scratch;
};

} // namespace orvo::client

#endif
