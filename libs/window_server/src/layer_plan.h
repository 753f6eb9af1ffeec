/**
 * @file layer_plan.h
 * Which part of a dirty region comes from where: most of a screen belongs to one window, whose
 * pixels go to the device without a detour.
 *
 * Rectangles and regions are in screen pixels. Pure. Thread: any.
 */
#ifndef WINDOW_SERVER_LAYER_PLAN_H
#define WINDOW_SERVER_LAYER_PLAN_H

#include <QRect>
#include <QRegion>
#include <QVector>

namespace qws {

/** Disjoint regions that together are the dirty region. */
struct LayerPlan {
    QRegion bare;            ///< no window
    QVector<QRegion> alone;  ///< exactly this window, by its index
    QRegion shared;          ///< two windows or more
};

/** @param places  the windows' rectangles, in any order. */
LayerPlan planLayers(const QRegion &dirty, const QVector<QRect> &places);

}  // namespace qws

#endif
