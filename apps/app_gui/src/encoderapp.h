/**
 * @file encoderapp.h
 * The application object: language, cursor images, inactivity count, periodic refresh, and the
 * filter that closes a dialog on a right press outside it.
 *
 * Thread: the display thread.
 */
#ifndef APP_GUI_ENCODERAPP_H
#define APP_GUI_ENCODERAPP_H

#include <QApplication>
#include <QImage>
#include <QList>

class QTranslator;

namespace qws {
struct Event;
}

/** Languages of the interface. Every non-negative number but 0 shows the untranslated texts. */
enum language_type {
    LANGUAGE_CHINESE = 0,
    LANGUAGE_SOURCE = 1,
};

/** Seconds without mouse activity. */
class KeyMouseCounter {
public:
    virtual ~KeyMouseCounter() = default;

    int idleSeconds = 0;   ///< 0 to `limit`, then 0 again
    bool paused = false;   ///< the count stands still
    int limit = 30;        ///< last second before the count starts over
    bool skipNext = true;  ///< the next mouse event does not reset the count
};

/** The process's QApplication; one per process. */
class EncoderApp : public QApplication {
    Q_OBJECT

public:
    /**
     * Shows the interface in `lang`, loads the cursor images and starts to see the raw
     * window-system events. `argc` and `argv` must outlive the object.
     */
    EncoderApp(int &argc, char **argv, language_type lang);
    ~EncoderApp() override;

    /** 0 when the translation is applied, else 1 (also before any language was). */
    static int language();

    /**
     * Sees every raw window-system event before Qt dispatches it. A right press outside the active
     * modal widget is taken away and reaches that widget as a right press at (1, 1).
     * @return true when the event is consumed.
     */
    bool qwsEventFilter(qws::Event *event);

    void timerEvent(QTimerEvent *event) override;
    /** Nothing: custom events are the main window's. */
    void customEvent(QEvent *event) override;

    static int curLangIndex;             ///< language applied, -1 before the first
    static int oldCursor;                ///< cursor image applied last, -1 for none
    static QList<QImage> cursorImgList;  ///< arrow, wait, ibeam

    KeyMouseCounter *counter = nullptr;  ///< owned
    int idleTimerId = 0;                 ///< of 1000 ms: counts idle seconds
    int refreshTimerId = 0;              ///< of 2000 ms: asks for a refresh of the screen

public slots:
    /** Nothing for a negative number or the language that is applied. */
    void switchLanguage(int lang);

private:
    QTranslator *translator;  // child of the application
};

#endif
