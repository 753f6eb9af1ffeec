/** @file gui_cfg_start.cpp Pushes the loaded store to the display at start. */

#include <algorithm>
#include <memory>

#include "app_gui.h"
#include "gui_cfg_store.h"

using namespace gui_cfg;

int uninit_parameters() {
    return 0;
}

int stop_process() {
    return 0;
}

namespace {

/** What start_process() pushes to the display: the store at one moment. */
struct StartState {
    VideoOutputInterface interface;
    VideoOutputInterfaceParameter parameter;
    int audio_window;
    VideoOutputDisplayParameter display;
    VideoOutputScreenSplitParameter splits[kMaxSplitRecords];
    int split_count;
    StreamingInputStatusChange streams[kMaxStreams];
    int stream_count;
    VideoOutSourceChange sources[kMaxChannels];
    int source_count;
    VideoOutputOSDParameter osd[kMaxOsdEntries];
    int osd_count;
    WatermarkOSDParameter watermark_text;
    WatermarkPictureParameter watermark_picture;
    WatermarkDotmatrixParameter watermark_dot;
};

/** Taken by prepare_start_process() and used up by start_process(). */
std::unique_ptr<StartState> prepared_start;

int within(uint32_t count, int capacity) {
    return static_cast<int>(std::min(count, static_cast<uint32_t>(capacity)));
}

/** Copies the store and settles the audio window. */
std::unique_ptr<StartState> take_start_state() {
    auto state = std::make_unique<StartState>();
    state->interface = data_VideoOutputInterface[0];
    state->parameter = data_VideoOutputInterfaceParameter[0];
    const AudioWindow window = audio_window(data_AudioOutSourceChange[0]);
    state->audio_window = window.shown;
    audWndIdx = window.stored;
    state->display = data_VideoOutputDisplayParameter[0];
    state->split_count = split_records_from(0);
    state->stream_count = within(num_StreamingInputStatusChange, kMaxStreams);
    state->source_count = within(num_VideoOutSourceChange, kMaxChannels);
    state->osd_count = within(num_VideoOutputOSDParameter, kMaxOsdEntries);
    std::copy_n(data_VideoOutputScreenSplitParameter, state->split_count, state->splits);
    std::copy_n(data_StreamingInputStatusChange, state->stream_count, state->streams);
    std::copy_n(data_VideoOutSourceChange, state->source_count, state->sources);
    std::copy_n(data_VideoOutputOSDParameter, state->osd_count, state->osd);
    state->watermark_text = data_WatermarkOSDParameter[0];
    state->watermark_picture = data_WatermarkPictureParameter[0];
    state->watermark_dot = data_WatermarkDotmatrixParameter[0];
    return state;
}

void push(const StartState &state) {
    gui_set_ao_window(state.audio_window);
    gui_update_video_display(&state.display);
    gui_update_user_split(state.splits, state.split_count);
    show_split(state.parameter);
    if (state.interface.OSDSupported != 0) {
        gui_update_urlinfo(state.streams, state.stream_count);
        gui_update_video_source(state.sources, state.source_count);
        for (int i = 0; i < state.osd_count; ++i) {
            gui_update_videooutput_osd(&state.osd[i], i);
        }
    }
    if (state.interface.WatermarkSupported != 0) {
        gui_update_watermark_osd(&state.watermark_text);
        gui_update_watermark_pic(&state.watermark_picture);
        gui_update_watermark_dot(&state.watermark_dot);
    }
}

}  // namespace

void prepare_start_process() {
    prepared_start = take_start_state();
}

int start_process() {
    if (!prepared_start) {
        push(*take_start_state());
        return 0;
    }
    // What the message thread has posted since then is newer and has to be delivered after it.
    const FirstInQueue first;
    push(*prepared_start);
    prepared_start.reset();
    return 0;
}
