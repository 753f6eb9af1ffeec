/**
 * @file stream_guard.h
 * Stands between nanomsg and its local peers: a connection that would end the process is ended
 * itself.
 *
 * nanomsg 1.1.5 checks a peer's greeting, then trusts the rest. It aborts the process at a frame of
 * a type it does not know, allocates whatever size a frame's header announces, keeps every reply
 * that its peer does not take, and of the descriptors that come with a message (SCM_RIGHTS in
 * unix(7)) it closes the first one only. This library defines recvmsg(2) and sendmsg(2), by which
 * nanomsg reads and writes its streams, on top of the C library's, and follows the bytes of every
 * local stream whose peer greets as a nanomsg peer does:
 *
 *     greeting   0 'S' 'P' 0, two bytes of protocol, two reserved bytes
 *     frame      1, eight bytes of size (the highest first), as many bytes
 *
 * - A frame of another type, or of more than `largest_frame` bytes, ends its connection.
 * - A frame of more than `free_frame` bytes takes room, from its header until the read that follows
 *   its last byte: nanomsg holds a block of its size for so long. So do more than `free_frame`
 * bytes that wait to be sent, until the peer has taken them. Where no room is left the connection
 * is ended. Before that, frames that have been on their way, in or out, for longer than
 * `patience_ms` have to give way: their connections are ended.
 * - Descriptors that come with the bytes of such a stream, or with the first eight of any local
 *   stream, are not taken: the kernel closes them.
 *
 * A connection that is ended gives its reader the bytes before the offence, never a whole header of
 * the offending frame, and then the end of the stream; its writer gets EPIPE.
 *
 * Everything else passes untouched: other descriptors and sockets, streams that begin otherwise
 * (but for descriptors within their first eight bytes), all of it before stream_guard_start();
 * results, errno and flags are the C library's.
 *
 * The definitions count where this library is looked up before the C library: link it to the
 * executable, ahead of nanomsg. A program in which nothing calls stream_guard_start() may lose it
 * to the linker's --as-needed.
 *
 * Thread: any. A read costs one fstat(2) and two short locks more, a write one; nothing is
 * allocated.
 */
#ifndef STREAM_GUARD_STREAM_GUARD_H
#define STREAM_GUARD_STREAM_GUARD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Bytes, milliseconds. */
typedef struct StreamGuardLimits {
    uint64_t largest_frame;  ///< the connection of a larger one is ended
    uint64_t free_frame;     ///< frames up to this size take no room
    uint64_t room;           ///< for the larger ones of all connections; at least largest_frame
    int64_t patience_ms;     ///< so long a frame keeps its room when others need it
    /**
     * Told that so many connections were ended since the last report, and why the last one was;
     * null for nobody. At most one report a minute, so that no peer can fill a log.
     * Thread: that of a read; may block it, must not read a stream.
     */
    void (*report)(unsigned connections, const char *reason);
} StreamGuardLimits;

/**
 * Guards every read from now on. Lowers the process's soft limit of descriptors to 4096 where it is
 * higher: so many connections can be followed.
 *
 * Thread: the main thread, before nanomsg is used. Called again, it forgets all connections.
 */
__attribute__((visibility("default"))) void stream_guard_start(const StreamGuardLimits *limits);

#ifdef __cplusplus
}
#endif

#endif
