#pragma once

#include "marvo/frontend/front_end.h"

/// Log lines written while it lives carry one more level of depth.
class dvFrontEnd::LogScope {
public:
    explicit LogScope(dvFrontEnd& frontEnd) : frontEnd_(frontEnd) { frontEnd_.logBegin(); }
    ~LogScope() { frontEnd_.logEnd(); }
    LogScope(const LogScope&) = delete;
    LogScope& operator=(const LogScope&) = delete;

private:
    dvFrontEnd& frontEnd_;
};
