/**
 * @file app_gui.h
 * Start-up, the message thread, the bridge from that thread to the display, colour texts.
 */
#ifndef APP_GUI_APP_GUI_H
#define APP_GUI_APP_GUI_H

#include <QEvent>

#include "exported.h"
#include "record_codec/records.h"

/** Types of the events that the bridge posts to the main window. 1007 is not used. */
enum UserEventType {
    UPDATE_VIDEO_DISPLAY_EVENT = 1001,
    UPDATE_WATERMARK_PIC_EVENT = 1002,
    UPDATE_WATERMARK_OSD_EVENT = 1003,
    SWITCH_SPLIT_EVENT = 1004,
    UPDATE_USER_SPLIT_EVENT = 1005,
    SELECT_AO_WINDOW_EVENT = 1006,
    REFRESH_SCREEN_EVENT = 1008,
    UPDATE_WATERMARK_DOT_EVENT = 1009,
    UPDATE_VIDEOOUTPUT_OSD_EVENT = 1010,
    UPDATE_URLINFO_EVENT = 1011,
    UPDATE_VIDEO_SOURCE_EVENT = 1012,
};

/**
 * What the bridge posts. For the events that carry records `data` is the address of a block from
 * `malloc`, which becomes the receiver's, and `param` their count or the record's index; for the
 * others `data` is a plain number.
 */
class UserEvent : public QEvent {
public:
    explicit UserEvent(int type, qint64 data = 0, qint64 param = 0);
    ~UserEvent() override;

    qint64 data;
    qint64 param;
    qint64 reserved[2] = {0, 0};
};

/**
 * While one lives, what its thread posts through the bridge is delivered before all that other
 * threads have posted and that is not delivered yet.
 */
class FirstInQueue {
public:
    FirstInQueue();
    ~FirstInQueue();
    FirstInQueue(const FirstInQueue &) = delete;
    FirstInQueue &operator=(const FirstInQueue &) = delete;
};

/** The whole process: what `main` runs. Returns the exit status. */
int run_app_gui(int argc, char **argv);

extern "C" {

/** Body of the message thread; the argument is ignored, the result null. */
APP_GUI_API void *recv_msg_routine(void *arg);

// ---- the bridge: callable from any thread, copies its argument
// Result of the functions that take records: 0; -2 for a null pointer; -6 when there is no memory
// for `count` of them, as for a negative count.

APP_GUI_API int gui_update_video_display(const VideoOutputDisplayParameter *record);
APP_GUI_API int gui_update_watermark_pic(const WatermarkPictureParameter *record);
APP_GUI_API int gui_update_watermark_osd(const WatermarkOSDParameter *record);
APP_GUI_API int gui_switch_split(int mode);
APP_GUI_API int gui_update_user_split(const VideoOutputScreenSplitParameter *records, int count);
APP_GUI_API int gui_set_ao_window(int window);
/** @param reason 1 at start-up, 2 from the periodic timers. */
APP_GUI_API int gui_refresh_screen(int reason);
APP_GUI_API int gui_update_watermark_dot(const WatermarkDotmatrixParameter *record);
/** Copies one record, whatever `index` is. */
APP_GUI_API int gui_update_videooutput_osd(const VideoOutputOSDParameter *record, int index);
APP_GUI_API int gui_update_urlinfo(const StreamingInputStatusChange *records, int count);
APP_GUI_API int gui_update_video_source(const VideoOutSourceChange *records, int count);

/**
 * Kept: copies no rectangle out. Zeroes `rect` when `index` is at or past the mode's windows,
 * leaves it untouched when it is below.
 * @return 0; -2 for an invalid mode, a null `rect` or an index outside 0 to 4.
 */
APP_GUI_API int gui_get_split_window(int mode, int index, int rect[4]);

// ---- colour texts "#RRGGBB" --------------------------------------------------------------------

/** 1 when `text` is "#" and six hexadecimal digits, else 0; null gives 0. */
APP_GUI_API int check_color_is_valid(const char *text);
/** 1 when both are valid and name the same colour, else 0. */
APP_GUI_API int check_color_is_same(const char *a, const char *b);
/**
 * Writes "#RRGGBB", or "#AARRGGBB" with `alpha`, of `text` or, when that is not valid, of r, g, b.
 * @param size  bytes of `dst`, bounds what is written as `snprintf` does.
 * @return `dst`.
 */
APP_GUI_API char *get_color_standard_name(char *dst, size_t size, const char *text,
                                          const int *alpha, int r, int g, int b);

}  // extern "C"

#endif
