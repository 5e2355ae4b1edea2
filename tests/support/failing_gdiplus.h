#pragma once

#include <memory>
#include <string>

/// Counts the calls of drawing, locking and creating that this program's own code makes to GDI+, and makes
/// one of them fail. One at a time. A bitmap whose unlocking fails is unlocked all the same: one that stays
/// locked could never be drawn on again.
class FailingGdiplus {
public:
    FailingGdiplus();
    ~FailingGdiplus();
    FailingGdiplus(const FailingGdiplus&) = delete;
    FailingGdiplus& operator=(const FailingGdiplus&) = delete;

    /// Counts from 0 again; the call of this number, counted from 1, of all functions or of one of them will
    /// fail. None does for 0. Throws std::out_of_range for a function that is not watched or not imported.
    void failCall(int number);
    void failCall(int number, const std::string& function);

    /// Whether that call has come.
    bool hasFailed() const;

    /// Calls of one function since the last failCall(), which throws as that does.
    int calls(const std::string& function) const;

private:
    struct Overrides;
    std::unique_ptr<Overrides> overrides_;
};
