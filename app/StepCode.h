#pragma once

// The points of a run that are reported to the log service.
namespace StepCode {

inline constexpr const char* launched = "23.01";
inline constexpr const char* checkWillStart = "23.11";
inline constexpr const char* checkDidEnd = "23.12";
inline constexpr const char* checkDidFail = "23.13";
inline constexpr const char* downloadWillStart = "23.21";
inline constexpr const char* downloadDidEnd = "23.22";
inline constexpr const char* downloadDidFail = "23.23";
inline constexpr const char* installWillStart = "23.31";
inline constexpr const char* installDidEnd = "23.32";
inline constexpr const char* installDidFail = "23.33";
inline constexpr const char* launchDidFail = "23.34";
inline constexpr const char* failureManualDownload = "23.42";
inline constexpr const char* failureQuit = "23.43";
inline constexpr const char* storeEditionPresent = "23.51";
inline constexpr const char* storeManualDownload = "23.52";
inline constexpr const char* storeQuit = "23.53";
inline constexpr const char* storeOpened = "23.54";

} // namespace StepCode

// Posts an event without precisions to the log service; nothing before the shared log controller is made.
void logStep(const char* code);
