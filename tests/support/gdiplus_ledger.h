#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

/// Keeps account of what this program's own code takes from GDI+ and GDI and gives back, and of the calls
/// that fail, for as long as it lives: under Wine no counter of the system tells. One at a time.
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

    /// Calls since the start that failed, by function, whoever looked at their results.
    Numbers failures() const;

    /// Functions of GDI+ that this program imports and whose failures would not be seen.
    std::vector<std::string> unwatched() const;

private:
    struct Overrides;
    std::unique_ptr<Overrides> overrides_;
};
