// How far something has come.
#pragma once

#include <oviapi/panel.h>

// A bar that fills from the left.
class ProgressBar : public OviAPI::WPanel {
public:
    void setPercent(int percent);
    bool doPaint(OviAPI::PaintDevice* device) override;

private:
    int m_percent = 0;
};
