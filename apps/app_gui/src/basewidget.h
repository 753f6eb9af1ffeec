/**
 * @file basewidget.h
 * The owners of a screen's widgets: a plain widget and a dialog that each own a UI holder and have
 * it translate its texts anew when the language changes, and the holder of the main window.
 *
 * Thread: display.
 */
#ifndef APP_GUI_BASEWIDGET_H
#define APP_GUI_BASEWIDGET_H

#include <QDialog>
#include <QMenu>
#include <QPoint>
#include <QWidget>

#include "moveimage.h"

/** The widgets of one screen. */
class UI {
public:
    virtual ~UI() = default;
    /** Creates the widgets as children of `owner`, which deletes them. */
    virtual void setupUi(QWidget *owner) = 0;
    /** Sets every translatable text anew. */
    virtual void retranslateUi() = 0;
};

/** A widget that owns a UI holder. The derived class calls `setupUi`. */
class BaseWidget : public QWidget {
    Q_OBJECT

public:
    /** @param ui  becomes the widget's; may be null. */
    BaseWidget(QWidget *parent, Qt::WindowFlags flags, UI *ui);
    ~BaseWidget() override;

    void changeEvent(QEvent *event) override;
    /** Takes the press and does nothing: it does not reach the parent. */
    void mousePressEvent(QMouseEvent *event) override;

signals:
    /** For derived classes to emit. */
    void mousePress(QPoint point);

private:
    Q_DISABLE_COPY_MOVE(BaseWidget)

    UI *mUi;
};

/** A dialog that owns a UI holder; a right press closes it. The derived class calls `setupUi`. */
class BaseDialog : public QDialog {
    Q_OBJECT

public:
    /** @param ui  becomes the dialog's; may be null. */
    BaseDialog(QWidget *parent, Qt::WindowFlags flags, UI *ui);
    ~BaseDialog() override;

    void changeEvent(QEvent *event) override;
    /** Rejects the dialog on a right press; takes any other press and does nothing. */
    void mousePressEvent(QMouseEvent *event) override;
    /** Grants the request. */
    void closeEvent(QCloseEvent *event) override;

signals:
    /** For derived classes to emit. */
    void mousePress(QPoint point);

private:
    Q_DISABLE_COPY_MOVE(BaseDialog)

    UI *mUi;
};

/** The main window's widgets: its menu and every overlay label, all hidden at first. */
class MainWindowUI : public UI {
public:
    void setupUi(QWidget *owner) override;
    /** Nothing: the main window has no translatable text. */
    void retranslateUi() override;

    QMenu *menu = nullptr;
    MoveWatermarkLabel *watermarkTxtLabels[16]{};
    MoveImageLabel *watermarkImgLabels[16]{};
    MoveOSDLabel *osdLabels[64]{};
};

#endif
