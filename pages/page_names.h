#pragma once

/// Names by which the pages find one another through the application.
inline constexpr wchar_t kMainPageName[] = L"main";
inline constexpr wchar_t kAudioDevicePageName[] = L"Active Audio Device";
inline constexpr wchar_t kOptionsPageName[] = L"options";
