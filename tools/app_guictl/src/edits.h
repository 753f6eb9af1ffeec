/**
 * @file edits.h
 * What a command line says about records: "field=value", "[1].field=value", "Index=2".
 *
 * A value's kind is its field's, never guessed from its look: `content=12` is a text. Numbers are
 * decimal, arrays are numbers joined by ",", texts are taken as they stand.
 */
#ifndef APP_GUICTL_EDITS_H
#define APP_GUICTL_EDITS_H

#include <optional>
#include <string>
#include <vector>

#include "catalogue.h"
#include "device.h"

namespace app_guictl {

/** One argument "field=value", with its "[i]." before it where there is one. */
struct Assignment {
    std::optional<size_t> position;  ///< which record, counted from 0; none for all selected ones
    std::string field;
    Json value;
};

struct Edit {
    std::optional<int32_t> index;  ///< only the records with this `Index`
    std::vector<Assignment> assignments;
};

/**
 * Reads arguments about one record type. `Index=n` without a position selects where the record has
 * a field of that name and the key holds several records (`may_select`). Throws CtlError(kUsage)
 * for an unknown field, a value that the field cannot hold, no "=".
 */
Edit read_edit(const Record &record, const std::vector<std::string> &arguments, bool may_select);

/** One object of all assignments, for a record that stands alone. Positions are refused. */
Json single_record(const Edit &edit);

/**
 * The objects to send so that the edit happens to `current`, what the device has now: one for each
 * record, empty where nothing changes. Throws CtlError(kUsage) when nothing would be meant.
 */
Json partial_records(const Edit &edit, const Json &current);

/** A number from its decimal text. Throws CtlError(kUsage) that names `what`. */
int32_t read_int32(const std::string &what, const std::string &text);

}  // namespace app_guictl

#endif
