// Tells ThreadSanitizer what Qt's event queue guarantees: what a thread did before it posted an
// event happens before the receiver sees that event. Qt's own library is not instrumented, so its
// queue's lock is not seen. Linked into the process in ThreadSanitizer builds only, by --wrap.

#include <sanitizer/tsan_interface.h>

#include <QCoreApplication>

#include "mainwindow.h"

#define POST_EVENT _ZN16QCoreApplication9postEventEP7QObjectP6QEventi
#define CUSTOM_EVENT _ZN10MainWindow11customEventEP6QEvent
#define JOIN(a, b) a##b
#define REAL(name) JOIN(__real_, name)
#define WRAPPED(name) JOIN(__wrap_, name)

extern "C" {

void REAL(POST_EVENT)(QObject *receiver, QEvent *event, int priority);
void REAL(CUSTOM_EVENT)(MainWindow *window, QEvent *event);

__attribute__((visibility("default"))) void WRAPPED(POST_EVENT)(QObject *receiver, QEvent *event,
                                                                int priority) {
    __tsan_release(event);
    REAL(POST_EVENT)(receiver, event, priority);
}

__attribute__((visibility("default"))) void WRAPPED(CUSTOM_EVENT)(MainWindow *window,
                                                                  QEvent *event) {
    __tsan_acquire(event);
    REAL(CUSTOM_EVENT)(window, event);
}

}  // extern "C"
