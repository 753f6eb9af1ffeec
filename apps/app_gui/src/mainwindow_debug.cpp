#include "mainwindow_debug.h"

int debug_mainwindow = 0;
