#include "layer_plan.h"

#include <gtest/gtest.h>

#include <random>

namespace qws {
namespace {

TEST(LayerPlan, AWindowAloneAndADialogOverItAreToldApart) {
    const QRect screen(0, 0, 100, 50);
    const QRect dialog(10, 10, 20, 20);
    const LayerPlan plan = planLayers(screen, {screen, dialog});
    EXPECT_TRUE(plan.bare.isEmpty());
    EXPECT_EQ(QRegion(screen) - dialog, plan.alone[0]);
    EXPECT_TRUE(plan.alone[1].isEmpty());
    EXPECT_EQ(QRegion(dialog), plan.shared);
}

TEST(LayerPlan, WithoutWindowsAllIsBare) {
    const QRegion dirty = QRegion(0, 0, 5, 5) + QRegion(9, 9, 3, 3);
    EXPECT_EQ(dirty, planLayers(dirty, {}).bare);
}

TEST(LayerPlan, EveryDirtyPixelHasExactlyOneSource) {
    std::mt19937 random(99);
    const auto rect = [&random] {
        const auto at = [&random](int bound) { return static_cast<int>(random() % bound); };
        return QRect(at(12), at(12), at(9), at(9));
    };
    for (int round = 0; round < 300; ++round) {
        const QRegion dirty = QRegion(rect()) + rect();
        QVector<QRect> places;
        for (unsigned n = random() % 4; n > 0; --n)
            places.append(rect());
        const LayerPlan plan = planLayers(dirty, places);
        for (int y = 0; y < 21; ++y) {
            for (int x = 0; x < 21; ++x) {
                const QPoint at(x, y);
                int above = 0;
                int alone = 0;
                for (int i = 0; i < places.size(); ++i) {
                    above += places[i].contains(at) ? 1 : 0;
                    alone += plan.alone[i].contains(at) ? 1 : 0;
                }
                const bool isDirty = dirty.contains(at);
                ASSERT_EQ(isDirty && above == 0, plan.bare.contains(at));
                ASSERT_EQ(isDirty && above == 1 ? 1 : 0, alone);
                ASSERT_EQ(isDirty && above > 1, plan.shared.contains(at));
            }
        }
    }
}

}  // namespace
}  // namespace qws
