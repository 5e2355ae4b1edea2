#pragma once

/// What was painted is painted anew once a minute, since nothing tells a page that the system's fonts, or how
/// it smooths them, are others now.
class OnceAMinute {
public:
    /// To be called once per pass. True in the last pass of about a minute.
    bool isDue() {
        if (--passesLeft_ > 0) {
            return false;
        }
        passesLeft_ = kPasses;
        return true;
    }

    /// Of 66 ms each; those of a slide are shorter.
    static constexpr int kPasses = 900;

private:
    int passesLeft_ = kPasses;
};
