/**
 * @file app_gui_sockets.h
 * What the message thread asks the system about its sockets, where nanomsg 1.1.5 is not to be
 * trusted.
 *
 * Thread: any; no state.
 */
#ifndef APP_GUI_APP_GUI_SOCKETS_H
#define APP_GUI_APP_GUI_SOCKETS_H

#include <string>

/** Path of an address, e.g. "/tmp/ipc/keepalive" of "ipc:///tmp/ipc/keepalive". */
std::string path_of(const std::string &address);

/**
 * Whether a socket may be bound at `path`: nothing stands there, or something that can be removed.
 * nanomsg replaces whatever nobody listens to, be it a plain file, and ends the process where it
 * cannot remove it.
 */
bool can_make_room(const std::string &path);

/**
 * Whether a descriptor of this process is connected to the socket file of that name; true where the
 * descriptors cannot be listed. Only the last component is compared: a sandbox may show the peer
 * under another folder.
 */
bool has_connection(const std::string &path);

#endif
