#pragma once

#include <map>
#include <memory>
#include <string>

/// Keeps account of what this program's own code takes from GDI+ and GDI and gives back, for as long as it
/// lives: under Wine no counter of the system tells. One at a time.
class GdiplusLedger {
public:
    GdiplusLedger();
    ~GdiplusLedger();
    GdiplusLedger(const GdiplusLedger&) = delete;
    GdiplusLedger& operator=(const GdiplusLedger&) = delete;

    /// Numbers by kind: "brush", "pen", "font family", "font", "string format", "graphics", "image",
    /// "locked bits", "GDI bitmap", "device context" and "heap block". Those with a number of 0 are left out.
    using Numbers = std::map<std::string, int>;

    /// Taken since the start and not given back; negative for what was taken before.
    Numbers outstanding() const;

    /// Taken since the start, given back or not.
    Numbers taken() const;

    /// What was outstanding when GDI+ was last ended.
    Numbers outstandingAtTheEnd() const;

private:
    struct Overrides;
    std::unique_ptr<Overrides> overrides_;
};
