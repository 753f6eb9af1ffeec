#include "basewidget.h"

#include <QCloseEvent>
#include <QEvent>
#include <QMouseEvent>

namespace {

/** Translates the holder's texts on a change of language; false for any other change. */
bool retranslated(UI *ui, QEvent *event) {
    if (event->type() != QEvent::LanguageChange) return false;
    if (ui != nullptr) ui->retranslateUi();
    event->accept();
    return true;
}

template <typename Label>
Label *hidden(Label *label) {
    label->hide();
    return label;
}

}  // namespace

BaseWidget::BaseWidget(QWidget *parent, Qt::WindowFlags flags, UI *ui)
    : QWidget(parent, flags), mUi(ui) {}

BaseWidget::~BaseWidget() {
    delete mUi;
}

void BaseWidget::changeEvent(QEvent *event) {
    if (!retranslated(mUi, event)) QWidget::changeEvent(event);
}

void BaseWidget::mousePressEvent(QMouseEvent *) {}

BaseDialog::BaseDialog(QWidget *parent, Qt::WindowFlags flags, UI *ui)
    : QDialog(parent, flags), mUi(ui) {}

BaseDialog::~BaseDialog() {
    delete mUi;
}

void BaseDialog::changeEvent(QEvent *event) {
    if (!retranslated(mUi, event)) QDialog::changeEvent(event);
}

void BaseDialog::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::RightButton) return;
    event->accept();
    reject();
}

void BaseDialog::closeEvent(QCloseEvent *) {}

void MainWindowUI::setupUi(QWidget *owner) {
    menu = new QMenu(owner);
    for (int i = 0; i < 16; ++i) {
        watermarkTxtLabels[i] = hidden(new MoveWatermarkLabel(owner, false));
        watermarkImgLabels[i] = hidden(new MoveImageLabel(owner, false, false));
    }
    for (MoveOSDLabel *&label : osdLabels)
        label = hidden(new MoveOSDLabel(owner, false, false));
    retranslateUi();
    QMetaObject::connectSlotsByName(owner);
}

void MainWindowUI::retranslateUi() {}
