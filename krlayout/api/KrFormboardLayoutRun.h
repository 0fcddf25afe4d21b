// A layout run that lays the checked sketch out as a board drawing (KrFormboardLayout) instead of
// on the grid. Everything else (reading the host, the checks and their messages, both write-back
// variants, the output arrays and the id queries) is the run it derives from, so a host drives it
// exactly like the run behind the facade; the layout type handed to Run is not used.
#pragma once

#include <krlayout/api/KrLayoutRun.h>
#include <krlayout/krlayout_export.h>

class KRLAYOUT_EXPORT KrFormboardLayoutRun : public KrLayoutRun {
public:
    KrFormboardLayoutRun();
    ~KrFormboardLayoutRun() override;

    // The board clearance for the next runs: 0 or more replaces the default (the larger grid
    // spacing), a negative value restores it. 0.
    int SetClearance(double clearance);
    // Figures of the latest layout: the branch points where some clearance could not be kept, the
    // segments placed and the clearance used. All 0 before the first layout.
    long GetCrowdedPointCount() const;
    long GetPlacedSegmentCount() const;
    double GetUsedClearance() const;

protected:
    int LayOut(IRoutingSketch* routingSketch, int layoutType) override;

private:
    double clearance;
    long crowded;
    long placedSegments;
    double usedClearance;
};
