#include "basewidget.h"

#include "labels_fixture.h"

namespace {

struct Calls {
    int setUps = 0, translations = 0, deletions = 0;
};

class CountingUI : public UI {
public:
    explicit CountingUI(Calls *calls) : mCalls(calls) {}
    ~CountingUI() override { ++mCalls->deletions; }
    void setupUi(QWidget *) override { ++mCalls->setUps; }
    void retranslateUi() override { ++mCalls->translations; }

private:
    Calls *mCalls;
};

template <typename Owner>
class EveryOwner : public testing::Test {};
using Owners = testing::Types<BaseWidget, BaseDialog>;
TYPED_TEST_SUITE(EveryOwner, Owners);

TYPED_TEST(EveryOwner, OwnsItsHolderAndDoesNotSetItUp) {
    Calls calls;
    {
        TypeParam owner(nullptr, Qt::Widget, new CountingUI(&calls));
        EXPECT_EQ(calls.setUps, 0);
        EXPECT_EQ(calls.deletions, 0);
    }
    EXPECT_EQ(calls.deletions, 1);
}

TYPED_TEST(EveryOwner, TranslatesOnALanguageChangeOnly) {
    Calls calls;
    TypeParam owner(nullptr, Qt::Widget, new CountingUI(&calls));
    QEvent language(QEvent::LanguageChange);
    language.ignore();
    QCoreApplication::sendEvent(&owner, &language);
    EXPECT_EQ(calls.translations, 1);
    EXPECT_TRUE(language.isAccepted());
    for (const QEvent::Type other :
         {QEvent::StyleChange, QEvent::FontChange, QEvent::EnabledChange}) {
        QEvent event(other);
        QCoreApplication::sendEvent(&owner, &event);
    }
    EXPECT_EQ(calls.translations, 1);
}

TYPED_TEST(EveryOwner, SurvivesWithoutAHolder) {
    TypeParam owner(nullptr, Qt::Widget, nullptr);
    QEvent language(QEvent::LanguageChange);
    language.ignore();
    QCoreApplication::sendEvent(&owner, &language);
    EXPECT_TRUE(language.isAccepted());
}

TYPED_TEST(EveryOwner, TakesParentAndFlags) {
    QWidget parent;
    TypeParam owner(&parent, Qt::Window | Qt::FramelessWindowHint, nullptr);
    EXPECT_EQ(owner.parentWidget(), &parent);
    EXPECT_TRUE(owner.windowFlags() & Qt::FramelessWindowHint);
}

TYPED_TEST(EveryOwner, EndsAPressHere) {
    TypeParam owner(nullptr, Qt::Widget, nullptr);
    int signalled = 0;
    QObject::connect(&owner, &TypeParam::mousePress, [&](QPoint) { ++signalled; });
    EXPECT_TRUE(sendMouse(owner, QEvent::MouseButtonPress, {1, 1}));
    EXPECT_TRUE(sendMouse(owner, QEvent::MouseButtonPress, {1, 1}, Qt::MiddleButton));
    EXPECT_EQ(signalled, 0) << "the signal is for derived classes";
}

TEST(BaseWidgetTest, StaysOpenOnARightPress) {
    BaseWidget widget(nullptr, Qt::Widget, nullptr);
    widget.show();
    EXPECT_TRUE(sendMouse(widget, QEvent::MouseButtonPress, {1, 1}, Qt::RightButton));
    EXPECT_TRUE(widget.isVisible());
}

TEST(BaseDialogTest, ARightPressRejectsItAndALeftOneDoesNot) {
    BaseDialog dialog(nullptr, Qt::Dialog, nullptr);
    int rejections = 0;
    QObject::connect(&dialog, &QDialog::rejected, [&] { ++rejections; });
    dialog.setResult(QDialog::Accepted);
    dialog.show();
    sendMouse(dialog, QEvent::MouseButtonPress, {1, 1});
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(rejections, 0);
    EXPECT_TRUE(sendMouse(dialog, QEvent::MouseButtonPress, {1, 1}, Qt::RightButton));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(rejections, 1);
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
}

TEST(BaseDialogTest, GrantsARequestToClose) {
    BaseDialog dialog(nullptr, Qt::Dialog, nullptr);
    dialog.show();
    EXPECT_TRUE(dialog.close());
    EXPECT_FALSE(dialog.isVisible());
}

TEST(MainWindowUITest, MakesEveryLabelHiddenAndInOrder) {
    QWidget owner;
    MainWindowUI ui;
    ui.setupUi(&owner);
    ASSERT_NE(ui.menu, nullptr);
    EXPECT_EQ(ui.menu->parent(), &owner);
    const auto texts = owner.findChildren<MoveWatermarkLabel *>();
    const auto pictures = owner.findChildren<MoveImageLabel *>();
    const auto osds = owner.findChildren<MoveOSDLabel *>();
    ASSERT_EQ(texts.size(), 16);
    ASSERT_EQ(pictures.size(), 16);
    ASSERT_EQ(osds.size(), 64);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(ui.watermarkTxtLabels[i], texts[i]);
        EXPECT_EQ(ui.watermarkImgLabels[i], pictures[i]);
    }
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(ui.osdLabels[i], osds[i]);
    owner.show();
    for (const QWidget *label : owner.findChildren<QLabel *>())
        EXPECT_TRUE(label->isHidden());
}

TEST(MainWindowUITest, AMenuIsMadeFirstAndTextAndPictureLabelsTakeTurns) {
    QWidget owner;
    MainWindowUI ui;
    ui.setupUi(&owner);
    const QObjectList &children = owner.children();
    ASSERT_EQ(children.size(), 1 + 16 + 16 + 64);
    EXPECT_EQ(children[0], ui.menu);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(children[1 + 2 * i], ui.watermarkTxtLabels[i]);
        EXPECT_EQ(children[2 + 2 * i], ui.watermarkImgLabels[i]);
    }
    EXPECT_EQ(children[33], ui.osdLabels[0]);
}

TEST(MainWindowUITest, NoLabelIsMovable) {
    QWidget owner;
    MainWindowUI ui;
    ui.setupUi(&owner);
    for (QLabel *label : owner.findChildren<QLabel *>()) {
        EXPECT_FALSE(sendMouse(*label, QEvent::MouseButtonPress, {1, 1}));
    }
}

/** An owner with a slot that is connected by its name. */
class MenuOwner : public QWidget {
    Q_OBJECT

public:
    int shown = 0;

public slots:
    void on_menu_aboutToShow() { ++shown; }
};

/** The main window's holder with a named menu. */
class NamedMenuUI : public MainWindowUI {
public:
    void retranslateUi() override { menu->setObjectName("menu"); }
};

TEST(MainWindowUITest, ConnectsTheOwnersSlotsByNameAfterTranslating) {
    MenuOwner owner;
    NamedMenuUI ui;
    ui.setupUi(&owner);
    emit ui.menu->aboutToShow();
    EXPECT_EQ(owner.shown, 1);
}

}  // namespace

#include "basewidget_test.moc"
