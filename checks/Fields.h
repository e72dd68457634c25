// Fields.h: the tables and fields that the rules read, by number: rules run over millions of
// records.
#ifndef ORVO_CHECKS_FIELDS_H
#define ORVO_CHECKS_FIELDS_H

#include "catalogue/Catalogue.h"
#include "catalogue/Uses.h"
#include "frame/Vocabulary.h"
#include "platform/store/Schema.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace orvo::checks {

using catalogue::Catalogue;
using catalogue::isIconFolder;
using catalogue::Record;

struct Fields {
    const store::TableDef& users;
    const store::TableDef& extensions;
    const store::TableDef& desktops;
    const store::TableDef& elements;
    const store::TableDef& folders;
    const store::TableDef& resources;

    struct {
        int login;
    } user;
    struct {
        int name;
    } extension;
    struct {
        int parent, caption, order, isFolder;
    } desktop;
    struct {
        int parent, desktop, caption, order, icon, resource;
    } element;
    struct {
        int parent, kind, caption;
    } folder;
    struct {
        int folder, name, kind, holder, since, icon;
    } resource;
};
const Fields& fields();

/// The tables in the order in which they are looked at.
const std::vector<const store::TableDef*>& checkedTables();

/// The record below which this one is shown; none at the top, and if it is missing.
Record above(const Catalogue& records, const Record& record);
/// The names of what stands above it, from the top, joined by " / ".
QString pathOf(const Catalogue& records, const Record& record);
/// The records directly below it. False from `each`: no more.
void forEachBelow(const Catalogue& records, const Record& record,
                  const std::function<bool(const Record&)>& each);
/// How many records stand below it, on any level; at most `most` are counted.
size_t countBelow(const Catalogue& records, const Record& record, size_t most);
/// The number of the field by which a record of the table stands below one of the same table; -1:
/// none.
int parentFieldOf(const store::TableDef& table);
/// The caption of the folder that holds all resources of a kind; null for files, which stand at the
/// top, and for what is no kind.
const char* topCaptionOf(int kind);
/// Whether this is the key of a row at the top of the resource tree, which no record stands behind.
bool isTopRow(const std::string& key);
/// A text in the form in which texts that differ only in case are equal.
std::string folded(std::string_view cp1251);

} // namespace orvo::checks

#endif
