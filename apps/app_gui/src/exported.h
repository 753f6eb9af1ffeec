/**
 * @file exported.h
 * APP_GUI_API marks what the process exports: the C surface listed in `exports.txt`. Everything
 * else is compiled with hidden visibility.
 */
#ifndef APP_GUI_EXPORTED_H
#define APP_GUI_EXPORTED_H

#define APP_GUI_API __attribute__((visibility("default")))

#endif
