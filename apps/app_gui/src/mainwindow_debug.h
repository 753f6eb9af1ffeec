/**
 * @file mainwindow_debug.h
 * The switch of the debug lines of the main window, the split parser and the line clipper.
 */
#ifndef APP_GUI_MAINWINDOW_DEBUG_H
#define APP_GUI_MAINWINDOW_DEBUG_H

#include "diagnostics.h"

/** Non-zero prints the lines; 0 at start. */
extern "C" int debug_mainwindow;

/** A debug line from here, while the switch is on. */
#define MAINWINDOW_DEBUG(...)        \
    do {                             \
        if (debug_mainwindow != 0) { \
            DEBUG_LINE(__VA_ARGS__); \
        }                            \
    } while (false)

#endif
