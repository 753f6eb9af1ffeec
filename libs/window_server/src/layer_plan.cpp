#include "layer_plan.h"

namespace qws {

LayerPlan planLayers(const QRegion &dirty, const QVector<QRect> &places) {
    LayerPlan plan;
    QRegion covered;
    for (const QRect &place : places) {
        const QRegion touched = dirty & place;
        plan.shared |= touched & covered;
        covered |= touched;
    }
    plan.bare = dirty - covered;
    plan.alone.reserve(places.size());
    for (const QRect &place : places)
        plan.alone.append((dirty & place) - plan.shared);
    return plan;
}

}  // namespace qws
