#pragma once

namespace Panelix {

/// The calling thread's single-threaded COM apartment: entered by the constructor, left by the destructor.
/// Both must run on the same thread.
class ComApartment {
public:
    /// Throws SysException ("Cannot initialise COM library", "Panelix Init Error") when COM does not start;
    /// nothing is left then. A thread that is already in such an apartment enters it once more.
    ComApartment();
    ~ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};

}  // namespace Panelix
