/**
 * @file gui_cfg_store.h
 * What the parts of the parameter store share among themselves: the families' traits, texts in
 * fixed arrays, and where the files are. Not for other modules.
 */
#ifndef APP_GUI_GUI_CFG_STORE_H
#define APP_GUI_GUI_CFG_STORE_H

#include <cstring>
#include <string>
#include <string_view>

#include "gui_cfg.h"
#include "record_codec/record_codec.h"

namespace gui_cfg {

/** Length over which names are compared. */
constexpr size_t kNameLength = 64;

/** Folder of all configuration; a test points it elsewhere. */
extern std::string config_root;

/** Where a file of that name is read from and written to. */
std::string capability_path(const char *file);
std::string user_path(const char *file);
std::string factory_path(const char *file);

/** What the families of one record per interface differ in. */
template <typename R>
struct InterfaceFamily;

/** A row of the families whose changes are written to a file. */
#define GUI_CFG_SAVED_FAMILY(R, file_name)                \
    template <>                                           \
    struct InterfaceFamily<R> {                           \
        static constexpr bool kSaved = true;              \
        static constexpr const char *kFile = file_name;   \
        static R *records() { return data_##R; }          \
        static uint32_t &count() { return num_##R; }      \
        static constexpr auto check = check_##R;          \
        static constexpr auto make_default = default_##R; \
        static constexpr auto update = update_##R;        \
        static constexpr auto read = f2s_array_##R;       \
        static constexpr auto write = s2f_array_##R;      \
    };
GUI_CFG_SAVED_FAMILY(WatermarkOSDParameter, "WatermarkOSDParameters.json")
GUI_CFG_SAVED_FAMILY(WatermarkPictureParameter, "WatermarkPictureParameters.json")
GUI_CFG_SAVED_FAMILY(WatermarkDotmatrixParameter, "WatermarkDotmatrixParameters.json")
#undef GUI_CFG_SAVED_FAMILY

template <>
struct InterfaceFamily<VideoOutputInterfaceParameter> {
    static constexpr bool kSaved = false;
    static VideoOutputInterfaceParameter *records() { return data_VideoOutputInterfaceParameter; }
};

constexpr const char *kOsdFile = "VideoOutputOSDParameters.json";

/** The user's files that this process writes; the others are written by other processes. */
constexpr const char *kSavedFiles[] = {
    kOsdFile,
    InterfaceFamily<WatermarkOSDParameter>::kFile,
    InterfaceFamily<WatermarkPictureParameter>::kFile,
    InterfaceFamily<WatermarkDotmatrixParameter>::kFile,
};

/** Writes the family's whole array to its user file. */
template <typename R>
void save_family() {
    using Family = InterfaceFamily<R>;
    // The setting is in force whether or not it could be saved; the writer has told why it could
    // not.
    (void)Family::write(user_path(Family::kFile).c_str(), Family::records(), Family::count());
}
void save_osd_entries();

/** Text of a fixed array, which need not hold a NUL. */
template <size_t N>
std::string_view text_of(const char (&array)[N]) {
    return {array, strnlen(array, N)};
}

/** Puts a text into a fixed array: the rest is zero, what does not fit is cut. */
template <size_t N>
void set_text(char (&array)[N], std::string_view text) {
    const size_t length = text.size() < N ? text.size() : N;
    std::memset(array, 0, N);
    std::memcpy(array, text.data(), length);
}

/** Puts a name from outside, of which at most 64 characters count, into a record. */
inline void set_name(char (&array)[kNameLength], const char *name) {
    set_text(array, {name, strnlen(name, kNameLength)});
}

inline bool same_name(const char *a, const char *b) {
    return std::strncmp(a, b, kNameLength) == 0;
}

template <typename R>
bool same_bytes(const R *a, const R *b, size_t count = 1) {
    return std::memcmp(a, b, count * sizeof(R)) == 0;
}

/** For messages: a null text prints as "(null)". */
inline const char *printable(const char *text) {
    return text ? text : "(null)";
}

/** Calls `visit` with each item of a ";"-separated list until it returns true; empty items skipped.
 */
template <typename Visit>
bool any_item(std::string_view list, Visit visit) {
    while (!list.empty()) {
        const size_t end = std::min(list.find(';'), list.size());
        if (end > 0 && visit(std::string(list.substr(0, end)))) return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

/** Split records of an interface that lie within the storage from record `first` on. */
int split_records_from(int first);

/** What the audio source means for the display. */
struct AudioWindow {
    int shown;   ///< window that the display marks, -1 for none
    int stored;  ///< what audWndIdx becomes
};
AudioWindow audio_window(const AudioOutSourceChange &source);

/** Switches the display: to a user layout when the record selects one that exists, else to its
 * mode. */
void show_split(const VideoOutputInterfaceParameter &record);

}  // namespace gui_cfg

#endif
