// The default settings: one table, in the order in which a new file shows them, and the one loop that writes it.
//
// There is no row for a second channel: callers form its keys with RegBuildKey and find no defaults there. What a
// setting means is the affair of the programs that read it. docs/settings.md is made from these rows.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "border/text.h"
#include "config/limits.h"
#include "config/store.h"
#include "hosts.h"
#include "kvos/attributes.h"

namespace kv::config {
namespace {

using Bytes = std::span<const unsigned char>;

/// A file in the user's own configuration directory, named with the whole path.
struct UserFile {
    const char* name;
};

/// One value: a number unless its default is a text, a file or bytes.
struct Row {
    enum class Type { dword, text, userFile, binary };

    constexpr Row(const char* theKey, const char* theName, std::int64_t number = 0)
        : key(theKey), name(theName), type(Type::dword), dword(static_cast<std::uint32_t>(number)) {}
    constexpr Row(const char* theKey, const char* theName, const char* theText)
        : key(theKey), name(theName), type(Type::text), text(theText) {}
    constexpr Row(const char* theKey, const char* theName, UserFile file)
        : key(theKey), name(theName), type(Type::userFile), text(file.name) {}
    constexpr Row(const char* theKey, const char* theName, Bytes theBytes)
        : key(theKey), name(theName), type(Type::binary), bytes(theBytes) {}

    std::string_view key;  // literals both, so with a terminator
    std::string_view name;
    Type type;
    std::uint32_t dword = 0;
    const char* text = "";
    Bytes bytes{};
};

/// Sixteen little-endian words, word i being 1 shifted left by i: each audio channel on its own track.
constexpr std::array<unsigned char, 64> oneBitEach() {
    std::array<unsigned char, 64> bytes{};
    for (unsigned i = 0; i < 16; ++i) bytes[i * 4 + i / 8] = static_cast<unsigned char>(1u << i % 8);
    return bytes;
}

constexpr auto kChannelMap = oneBitEach();
constexpr std::array<unsigned char, 11> kDiskText{'Z', 'M', 'W', ' ', 'D', 'i', 's', 'k'};
constexpr std::array<unsigned char, 11> kDeviceText{'K', 'o', 'r', 'v', 'a', 'n', 'e', 'V'};
constexpr Bytes kOneBitEach = kChannelMap;
constexpr Bytes kDiskName = kDiskText;
constexpr Bytes kDeviceId = kDeviceText;

// ---- keys --------------------------------------------------------------------------------------------------------

constexpr const char* kAdvanced = "ZMW\\Advanced";
constexpr const char* kAvHal = "ZMW\\Advanced\\AvHAL";
constexpr const char* kDebug = "ZMW\\Advanced\\Debug";
constexpr const char* kMediaFile = "ZMW\\Advanced\\MediaFile";
constexpr const char* kOmfi = "ZMW\\Advanced\\MediaFile\\Omfi";
constexpr const char* kTestPatterns = "ZMW\\Advanced\\MediaFile\\TestPatterns";
constexpr const char* kTransfer = "ZMW\\Advanced\\MediaFile\\Transfer";
constexpr const char* kVga = "ZMW\\Advanced\\VGA";
constexpr const char* kUnc = "ZMW\\Advanced\\ZMWUNC";
constexpr const char* kConfig = "ZMW\\Config";
constexpr const char* kControl = "ZMW\\Control0";
constexpr const char* kExternal = "ZMW\\External0";
constexpr const char* kInternal = "ZMW\\Internal0";
constexpr const char* kRecordDir = "ZMW\\RecordDir";
constexpr const char* kNetServer = "ZMW\\NetServer";
constexpr const char* kFileDirs = "ZMW\\NetServer\\FileDirs";
constexpr const char* kHttpDirs = "ZMW\\NetServer\\HttpDirs";
constexpr const char* kSyncChannel = "ZMW\\SyncChannel";
constexpr const char* kLiveStills = "MediaKiln\\PlugIns\\KVLiveStills";
constexpr const char* kAdvAudio = "MediaKiln\\PlugIns\\KVAdvAudio";
constexpr const char* kQtMovie = "MediaKiln\\PlugIns\\QTMovie";
constexpr const char* kKilnAdvanced = "MediaKiln\\Advanced";
constexpr const char* kFirstTokenKey = "MediaKiln\\OAuth2\\" KVUTIL_STORAGE_HOST;
constexpr const char* kSecondTokenKey = "MediaKiln\\OAuth2\\" KVUTIL_IDENTITY_HOST;

/// Made ahead of everything else: what is added under a missing top key is not stored.
constexpr std::array kTopKeys{"ZMW", "MediaKiln"};

// ---- the table ---------------------------------------------------------------------------------------------------

// An empty text makes no value: the setting stands here for its name, and is not in a new file.
// clang-format off
constexpr Row kDefaults[] = {
    {kAdvanced, "EnableLargeRW", 1},
    {kAdvanced, "MatchOutputToClip"},

    {kAvHal, "NoInternalAudioVideo"},
    {kAvHal, "SyncPhase"},
    {kAvHal, "DisableWave"},
    {kAvHal, "DisableASIO", 1},
    {kAvHal, "DisableAntex", 1},
    {kAvHal, "DisableDirectSound", 1},
    {kAvHal, "DisableDVS"},
    {kAvHal, "DisableViewGraphics", 1},
    {kAvHal, "DisableDigiSuite", 1},
    {kAvHal, "DisableDigiServer", 1},
    {kAvHal, "DisableMtxUnc", 1},
    {kAvHal, "DisableVFW", 1},
    {kAvHal, "DisableDVM", 1},
    {kAvHal, "DisableVGA"},
    {kAvHal, "DisableDCxNT", 1},
    {kAvHal, "DisableAjaKona"},
    {kAvHal, "DisableBlueFish444"},
    {kAvHal, "DisableDecklink"},
    {kAvHal, "DisableVideoPump3", 1},
    {kAvHal, "DisableDigitalRapids", 1},
    {kAvHal, "DisableAVDirectShow"},
    {kAvHal, "DisableAudio"},
    {kAvHal, "DisableVideo"},
    {kAvHal, "Tbc4", 1},
    {kAvHal, "DisableRealTime", 1},
    {kAvHal, "ProductionMode", 3},
    {kAvHal, "WaveExtensible"},
    {kAvHal, "MemoryPool", 0x20000000},
    {kAvHal, "AnalogMonitorSDType", 1},
    {kAvHal, "AnalogMonitorHDType", 524288},
    {kAvHal, "AnalogMonitorMethod", 2},
    {kAvHal, "AnalogMonitorUpMode", 1},
    {kAvHal, "AnalogMonitorDownMode", 1},
    {kAvHal, "ProcessorMask"},
    {kAvHal, "CurrentAudioInput"},
    {kAvHal, "AudioMonitor"},
    {kAvHal, "VideoMonitor"},
    {kAvHal, "Superimpose"},
    {kAvHal, "SuperimposeType"},
    {kAvHal, "SuperimposeX", 240},
    {kAvHal, "SuperimposeY", 300},
    {kAvHal, "SuperimposeVGAOnly"},
    {kAvHal, "EnableAudScrub", 1},
    {kAvHal, "MaxFrameUnits", 5},
    {kAvHal, "SmpteAudioEncodeChannel"},
    {kAvHal, "SmpteAudioDecodeChannel"},
    {kAvHal, "SmpteAudioEnabled"},
    {kAvHal, "SmpteAudioRegenerate"},
    {kAvHal, "ForceWaveDriver"},
    {kAvHal, "DisableVWF", 1},
    {kAvHal, "ShowVITCLines"},

    {kDebug, "ShowInformational"},
    {kDebug, "ShowWarnings", 1},
    {kDebug, "ShowErrors", 1},
    {kDebug, "UseErrorBox"},
    {kDebug, "MKTestActive"},
    {kDebug, "UseWindow"},
    {kDebug, "DebugLevel"},
    {kDebug, "EnableLog", 1},
    {kDebug, "EnableList", 1},
    {kDebug, "DefaultLogName", "/var/www/html/logs/default.log"},

    {kMediaFile, "DefStillLen", 1},
    {kMediaFile, "MaxCompatibility"},
    {kMediaFile, "OfflineClips"},
    {kMediaFile, "VitcGenMode"},

    {kOmfi, "UseInternalCodec"},
    {kOmfi, "OMFExternalAudioFileType", 20},

    {kTestPatterns, "TestDuration", 150},
    {kTestPatterns, "ShowTC"},
    {kTestPatterns, "TCPositionX", 120},
    {kTestPatterns, "TCPositionY", 300},
    {kTestPatterns, "AmplitudeLeft", 7500},
    {kTestPatterns, "UBRoll"},
    {kTestPatterns, "UBLtc", 0xabcdef01},
    {kTestPatterns, "UBVitc", 0xf00dbaad},
    {kTestPatterns, "OffsetLtc"},
    {kTestPatterns, "OffsetVitc"},
    {kTestPatterns, "AmplitudeRight", 7500},

    {kTransfer, "TransferStartTime"},
    {kTransfer, "TransferEndTime"},

    {kVga, "ReduceVGAFrameRate"},
    {kVga, "GenlockEnabled"},
    {kVga, "Superimpose"},
    {kVga, "DirectXEnable", 1},
    {kVga, "DXRGBDirect", 1},
    {kVga, "DXRGBOverlay", 1},
    {kVga, "DXYUVOverlay", 1},
    {kVga, "DXYUVDirect", 1},
    {kVga, "DXForceSingleBuffer"},
    {kVga, "DisableFullScreenXO", 1},
    {kVga, "VGAFrameOffset"},
    {kVga, "AllowResolutionChanges"},
    {kVga, "AllowFrequencyChanges"},
    {kVga, "VideoSizeX", 200},
    {kVga, "VideoSizeY", 32},
    {kVga, "VideoSizeW", 1280},
    {kVga, "VideoSizeH", 986},
    {kVga, "FullScreen"},
    {kVga, "VideoAspectRatio", 20},

    {kUnc, "EnableStandardDef", 1},
    {kUnc, "EnableHighDef", 1},
    {kUnc, "DefaultLUTEnable"},
    {kUnc, "DefaultLUTLinear"},
    {kUnc, "MaxCheckBoards", 8},
    {kUnc, "DisableBoardReset"},
    {kUnc, "AlphaChromaSource", 1},
    {kUnc, "UseBothBoardChannels"},
    {kUnc, "Film2KMode", 1},
    {kUnc, "OverrideVideoSize"},
    {kUnc, "VideoSizeX"},
    {kUnc, "VideoSizeY", 34},
    {kUnc, "VideoSizeW", 720},
    {kUnc, "VideoSizeH", 486},
    {kUnc, "VideoType", 2},
    {kUnc, "VideoRate", 24},
    {kUnc, "VideoScale", 1},
    {kUnc, "AudioHwTimeout"},
    {kUnc, "VideoHwTimeout"},
    {kUnc, "EmbeddedAudioIn", 1},
    {kUnc, "EmbeddedAudioOut", 1},
    {kUnc, "EmbeddedAudioAuto", 1},
    {kUnc, "MemoryPool", 0x20000000},
    {kUnc, "EnableInputCheck", 1},
    {kUnc, "Use10Bit"},
    {kUnc, "Use36Mhz"},
    {kUnc, "PictureLineOrder", 1},
    {kUnc, "F2Dominant"},
    {kUnc, "SwapFields"},
    {kUnc, "EnableAlpha", 1},
    {kUnc, "DefaultAlphaHigh", 1},
    {kUnc, "ChannelLink"},
    {kUnc, "BoardsPerChannel", 1},
    {kUnc, "ForceInputSync"},
    {kUnc, "MultiBoardSyncTimeout", 200},
    {kUnc, "UseAjaPreroll", 1},
    {kUnc, "RP188OffsetOut"},
    {kUnc, "RP188OffsetIn"},
    {kUnc, "RP188LTCPrimary"},
    {kUnc, "VITCLine0", -1},
    {kUnc, "VITCLine1", -1},
    {kUnc, "VITCLine2", -1},
    {kUnc, "AudioMonitorPair"},
    {kUnc, "AudioAesEbuBnc"},
    {kUnc, "Audio12Encoded"},
    {kUnc, "DisableChannel2", 1},
    {kUnc, "HD2K_Y_Offset", 238},
    {kUnc, "HD2K_X_Offset", 64},
    {kUnc, "EAudioDataChannel"},
    {kUnc, "ForceSoftwareDPX"},
    {kUnc, "ForceSoftwareTIFF"},
    {kUnc, "ForceYUY2"},
    {kUnc, "UseTimeOfDayTimeCode"},
    {kUnc, "AESEBU"},
    {kUnc, "ForceVTRTC"},
    {kUnc, "DisableRP188"},
    {kUnc, "AllowBadRP188"},
    {kUnc, "DisableTC"},
    {kUnc, "EnablePreRead", 1},
    {kUnc, "DisableCombinedDMA"},
    {kUnc, "AudioDMAChannel", 1},
    {kUnc, "SimultaneousRecordPlay", 1},
    {kUnc, "DisableDualLinkOut"},
    {kUnc, "DisableAudioDMA"},
    {kUnc, "GenlockEnabled"},
    {kUnc, "GenlockSource", 4},
    {kUnc, "Force8Channels"},
    {kUnc, "Force64"},
    {kUnc, "LimitSDI", 1},
    {kUnc, "Dither8Bit"},
    {kUnc, "RGBRange"},
    {kUnc, "RGBRangeDualLink"},
    {kUnc, "IMXD10CaptureOffset"},
    {kUnc, "AudioCaptureOffset"},
    {kUnc, "Codec420Type"},
    {kUnc, "DVCodecType"},
    {kUnc, "RP215ForceOnRead"},
    {kUnc, "RP215DisableGenerate"},
    {kUnc, "OverrideBufferLevel"},
    {kUnc, "AudioMappingInput", kOneBitEach},
    {kUnc, "AudioMappingOutput", kOneBitEach},
    {kUnc, "AudioChannels", 255},
    {kUnc, "EnableAudScrub", 1},
    {kUnc, "HDSDSyncSource", 3},
    {kUnc, "VideoMonitor"},
    {kUnc, "Superimpose"},
    {kUnc, "ShowVITCLines"},
    {kUnc, "OverlapSyncFrames"},
    {kUnc, "NoInternalAudioVideo"},
    {kUnc, "Force32Pci"},
    {kUnc, "CurrentAudioInput", -1},
    {kUnc, "SyncPhase"},
    {kUnc, "AudioMonitor"},
    {kUnc, "SuperimposeX", 100},
    {kUnc, "SuperimposeY", 100},
    {kUnc, "ProcessorMask", -1},
    {kUnc, "Ignore801"},
    {kUnc, "AesEbu811"},
    {kUnc, "VideoChannels", 1},

    {kConfig, "EnableAppPipeServer"},
    {kConfig, "IgnoreDSync"},
    {kConfig, "IgnoreInt"},
    {kConfig, "IgnoreHttpd"},
    {kConfig, "IgnoreExt"},
    {kConfig, "IgnoreNet"},
    {kConfig, "IgnoreCtl"},
    {kConfig, "IgnoreLCDPanel"},
    {kConfig, "IgnorePandora", 1},
    {kConfig, "IgnoreNewFeature", 1},
    {kConfig, "AllowIndependentChannelConfigs"},
    {kConfig, "DebugVBlank", -1},
    {kConfig, "DebugVCross", -1},
    {kConfig, "DebugChannels"},
    {kConfig, "DisableOpenAllChannels"},
    {kConfig, "EditRecorder"},
    {kConfig, "SWJpegFlags", 1},
    {kConfig, "ShiftPALOneFrame"},
    {kConfig, "MaxIntChannels", 1},
    {kConfig, "DefaultBits", 8},
    {kConfig, "DefaultChromaType", 1},
    {kConfig, "DefaultCompression", 0x1000000},
    {kConfig, "DefaultHoriz", 720},
    {kConfig, "DefaultProfileLevel"},
    {kConfig, "DefaultSignalFormat", 287326749},
    {kConfig, "DefaultStreamType"},
    {kConfig, "DefaultVert", 486},
    {kConfig, "DefaultAudioFrequency", 48000},
    {kConfig, "DefaultAudioBits", 16},
    {kConfig, "EnableVBIVideoChannel"},
    {kConfig, "Ports", 6},
    {kConfig, "IgnoreDS", 1},
    {kConfig, "IgnoreQT", 1},
    {kConfig, "IgnoreDPS", 1},
    {kConfig, "IgnoreVCMPG", 1},
    {kConfig, "IgnoreVela2", 1},
    {kConfig, "IgnoreVela", 1},
    {kConfig, "IgnoreStradis", 1},
    {kConfig, "IgnoreOptiMPEG", 1},
    {kConfig, "IgnoreMikrom", 1},
    {kConfig, "IgnoreOpti", 1},
    {kConfig, "CreatePicons", 1},
    {kConfig, "IgnoreArgus", 1},
    {kConfig, "IgnoreAVKS", 1},
    {kConfig, "IgnoreMPGOpti", 1},
    {kConfig, "IgnoreMPGStradis", 1},
    {kConfig, "IgnoreMPGVela", 1},
    {kConfig, "UseCuda", 1},
    {kConfig, "UseOpenCL", 1},
    {kConfig, "UseShaders", 1},

    {kControl, "ComPort", 1},
    {kControl, "DisableKernelDriver", 1},
    {kControl, "EditOn", 6},
    {kControl, "EditOff", 6},
    {kControl, "DisableVTRSerial"},
    {kControl, "DisableOdetics"},
    {kControl, "DisableLouth"},
    {kControl, "Channel"},
    {kControl, "ForceDevice"},
    {kControl, "Debug"},
    {kControl, "PlayFromBumpOffset"},
    {kControl, "PauseDelay"},
    {kControl, "VDCPDiskPreroll", 6},
    {kControl, "VDCPAddCueInit"},
    {kControl, "UsingClipMaster"},
    {kControl, "ReplayMode"},
    {kControl, "ReplayCamera"},
    {kControl, "UsesMenus"},
    {kControl, "GPIEnable"},
    {kControl, "IgnoreMulti"},
    {kControl, "DisableCmdDMCC"},
    {kControl, "DisableCmdVAR"},
    {kControl, "DisableCmdProgPlay"},
    {kControl, "DisableCmdShuttle"},
    {kControl, "FastForwardSpeed", 45},
    {kControl, "UseCF"},
    {kControl, "EjectDur", 2},
    {kControl, "BumpUseLastTC", 1},
    {kControl, "EditUseLastTC"},
    {kControl, "StepDelay"},
    {kControl, "JamTC", 1},
    {kControl, "EnableJogAtPlay"},
    {kControl, "DisableEECmds"},
    {kControl, "Pal"},
    {kControl, "FastAutoEdit"},
    {kControl, "Device", 45056},
    {kControl, "DiskName", kDiskName},
    {kControl, "DeviceID", kDeviceId},
    {kControl, "TimeCode"},
    {kControl, "UserBits"},
    {kControl, "TCType", 2},
    {kControl, "LouthTCType", 2},
    {kControl, "ForceLouthTCType"},
    {kControl, "TCAllow60Frames"},
    {kControl, "In"},
    {kControl, "Out"},
    {kControl, "AIn"},
    {kControl, "AOut"},
    {kControl, "PrevIn", -1},
    {kControl, "PrevOut", -1},
    {kControl, "Preroll", 150},
    {kControl, "Postroll", 60},
    {kControl, "Timer1Preset"},
    {kControl, "TimerOffset"},
    {kControl, "TCPreset"},
    {kControl, "UBPreset"},
    {kControl, "Head"},
    {kControl, "Field"},
    {kControl, "EditPhase"},
    {kControl, "EEOn", 6},
    {kControl, "EEOff", 6},
    {kControl, "EditOffset"},
    {kControl, "EditAudioAAEnablesAll"},
    {kControl, "EditVideoChannelOverride"},
    {kControl, "PlayTCReturnOffset"},
    {kControl, "DMCSpeed"},
    {kControl, "FastPlayTCJam"},
    {kControl, "PauseBeforeStop"},
    {kControl, "ModeAfterSeek"},
    {kControl, "DisablePlayWhileRecord"},
    {kControl, "AutoModeJog"},
    {kControl, "GreedyVBlank"},
    {kControl, "BumpToPlayOffsetFrames", 10},
    {kControl, "BumpToPlayWaitFrames", 14},
    {kControl, "TermClipsWithZeros", 1},
    {kControl, "sendvdcpdeferred", 1},
    {kControl, "LimitLongNames"},
    {kControl, "DisableNonPlaySpeed"},

    {kExternal, "ComPort"},
    {kExternal, "Protocol"},
    {kExternal, "DisableProlink", 1},
    {kExternal, "DisableLouth"},
    {kExternal, "DisableOdetics"},
    {kExternal, "DisableVTRSerial"},
    {kExternal, "MaxLineErrors", 13},
    {kExternal, "DisableCheckDevice"},
    {kExternal, "LastTCType", 2},
    {kExternal, "LastTCSource", 4},
    {kExternal, "Debug"},
    {kExternal, "DisableAutoEdit", 8},
    {kExternal, "EditMode", 1},
    {kExternal, "UseVTREditPreset"},
    {kExternal, "BaudRate", 38400},
    {kExternal, "DataSize", 8},
    {kExternal, "Parity", 1},
    {kExternal, "StopBits", 1},
    {kExternal, "EditOn", 4},
    {kExternal, "EditOff", 4},
    {kExternal, "PlayDelay", 6},
    {kExternal, "Preroll", 150},
    {kExternal, "Postroll", 60},
    {kExternal, "EditPhaseInMs"},
    {kExternal, "EditPhaseInFrames"},
    {kExternal, "EditPhaseOutMs"},
    {kExternal, "EditPhaseOutFrames"},
    {kExternal, "Phase"},
    {kExternal, "IgnoreVTRSeek"},
    {kExternal, "ForceTCType"},
    {kExternal, "PortRecord", 129},
    {kExternal, "PortPlay", 1},
    {kExternal, "PortCurrent", 1},
    {kExternal, "LastID", 45131},
    {kExternal, "EditPhaseIn"},
    {kExternal, "EditPhaseOut"},

    {kInternal, "DefAudioExt", "wav"},
    {kInternal, "DefStillExt", "tga"},
    {kInternal, "DefStreamExt", "yuv"},
    {kInternal, "DefVideoExt", "yuv"},
    {kInternal, "Enabled", 1},
    {kInternal, "AudioChannels", 255},
    {kInternal, "VideoChannels", 1},
    {kInternal, "EditOn", 4},
    {kInternal, "EditOff", 4},
    {kInternal, "PlayDelay", 6},
    {kInternal, "Bits", 8},
    {kInternal, "SignalFormat", 287326749},
    {kInternal, "ClipFile", UserFile{"Clips.log"}},
    {kInternal, "TCFile", UserFile{"Default.edl"}},
    {kInternal, "DATAComPort"},
    {kInternal, "DATAProtocol"},
    {kInternal, "DATABaudRate", 38400},
    {kInternal, "DATADataSize", 8},
    {kInternal, "DATAParity", 1},
    {kInternal, "DATAStopBits", 1},
    {kInternal, "VideoInputCurrent", 256},
    {kInternal, "VideoOutputCurrent", 256},
    {kInternal, "AudioInputCurrent", 1024},
    {kInternal, "AudioOutputCurrent", 1024},
    {kInternal, "VideoInputAnalog", 1},
    {kInternal, "VideoOutputAnalog", 1},
    {kInternal, "Compression", 0x1000000},
    {kInternal, "AudioBits", 16},
    {kInternal, "UseFieldDup", 1},
    {kInternal, "FilmFile", ""},
    {kInternal, "EditFile", ""},
    {kInternal, "LastMode"},
    {kInternal, "LastClip", ""},
    {kInternal, "LastPosition"},
    {kInternal, "ShareFiles", 1},
    {kInternal, "MonitorFiles"},
    {kInternal, "SlowMotionType"},
    {kInternal, "ReplayMode"},
    {kInternal, "ReplayFrames", 250},
    {kInternal, "SerialEditMode"},
    {kInternal, "MaxSpeed", 90},
    {kInternal, "DefStillLength", 150},
    {kInternal, "ChannelName", ""},
    {kInternal, "RecKBPerSec", 10000},
    {kInternal, "FrameDropMode"},
    {kInternal, "AudioWriteType"},
    {kInternal, "DefaultFrameLoad", 3},
    {kInternal, "UseOldOverlapMethod"},
    {kInternal, "DisableDiskSpaceCheck"},
    {kInternal, "StopAtVTRExtents"},
    {kInternal, "DefTC"},
    {kInternal, "DefUB"},
    {kInternal, "DefLtcTC"},
    {kInternal, "DefLtcUB"},
    {kInternal, "DefVitcTC"},
    {kInternal, "DefVitcUB"},
    {kInternal, "DefTCSource", 4},
    {kInternal, "DefTCType", 2},
    {kInternal, "DefCompRateSize"},
    {kInternal, "UseFieldFlip"},
    {kInternal, "DefaultPiconFrame", 250},
    {kInternal, "MpegGopSize", 14},
    {kInternal, "MpegIFactor", 4},
    {kInternal, "MpegBFactor", 2},
    {kInternal, "MpegPFactor", 2},
    {kInternal, "MpegRefPeriod", 1},
    {kInternal, "AllowMpegSettings"},
    {kInternal, "IFrameStart"},
    {kInternal, "DefVTRType"},
    {kInternal, "DefLocalMode"},
    {kInternal, "DefRecordInhibit"},
    {kInternal, "DefClipMode"},
    {kInternal, "NoAudio"},
    {kInternal, "NoVideo"},
    {kInternal, "RecordFlags"},
    {kInternal, "PlayFlags"},
    {kInternal, "FrameBasedCutlist", 1},
    {kInternal, "DeleteGraphs", 1},
    {kInternal, "FilterMode"},
    {kInternal, "InfoChannels"},
    {kInternal, "ClipMaster"},
    {kInternal, "SOMEnable"},
    {kInternal, "SOM", 120},
    {kInternal, "CurrentInput", 8},
    {kInternal, "BufferMode"},
    {kInternal, "ForceVGAVideo"},
    {kInternal, "proxyaspectratio"},
    {kInternal, "proxycompressiontype"},
    {kInternal, "proxydatarate", 5000},
    {kInternal, "proxyfiletype", 197},
    {kInternal, "proxyhalfrate"},
    {kInternal, "proxyhalfsize", 1},
    {kInternal, "proxyheight"},
    {kInternal, "proxymode", 1},
    {kInternal, "proxyscale"},
    {kInternal, "proxywidth"},
    {kInternal, "proxydirectory", "/var/www/html/video/proxy/"},
    {kInternal, "Dir", "/var/www/html/video/live/"},

    {kRecordDir, "Dir", "/var/www/html/video/live/"},

    {kNetServer, "AddRecordDir", 1},
    {kNetServer, "AllowRecordDir"},
    {kNetServer, "PassthroughAuthentication"},
    {kNetServer, "HTTPPort", 1080},

    {kFileDirs, "Default"},

    {kHttpDirs, "Default"},
    {kHttpDirs, "Path", "/var/www/html"},
    {kHttpDirs, "DefaultFile", "index.html"},
    {kHttpDirs, "UserName", ""},
    {kHttpDirs, "Password", ""},
    {kHttpDirs, "AllowDirListing"},
    {kHttpDirs, "Writable"},
    {kHttpDirs, "AllowScripts"},
    {kHttpDirs, "BaudRate", 19200},
    {kHttpDirs, "ComPort", 3},
    {kHttpDirs, "Enabled", 1},
    {kHttpDirs, "OEM"},
    {kHttpDirs, "ForReplay"},
    {kHttpDirs, "EnableVGA", 1},

    {kSyncChannel, "GPINationalInstruments"},
    {kSyncChannel, "GPIVideoPump"},
    {kSyncChannel, "GPILpt"},
    {kSyncChannel, "GPICom"},
    {kSyncChannel, "LTCWaveID"},
    {kSyncChannel, "LTCAdrienne"},
    {kSyncChannel, "LTCWaveDevice", -1},
    {kSyncChannel, "TCInIsVTR"},
    {kSyncChannel, "LTCExtEnable"},
    {kSyncChannel, "LTCExtChannel"},
    {kSyncChannel, "LTCEnable"},
    {kSyncChannel, "LTCOffset"},
    {kSyncChannel, "GPIEnable"},
    {kSyncChannel, "GPIDelay", 5000},
    {kSyncChannel, "TCType", 2},
    {kSyncChannel, "TCSource", 4},
    {kSyncChannel, "GPIDelayMS", 5000},
    {kSyncChannel, "LTCZMWChannel"},

    {kLiveStills, "DefaultRate", 24},
    {kLiveStills, "DefaultScale", 1},

    {kAdvAudio, "AlwaysWriteBroadcastWaveHeader", 1},

    {kQtMovie, "AllowMultiTrackAudio", 1},
    {kQtMovie, "MonoAudioTracks"},

    {kKilnAdvanced, "WriteRTIndexFile", 1},

    {kFirstTokenKey, "oauth2server", KVUTIL_TOKEN_ENDPOINT},

    {kSecondTokenKey, "oauth2server", KVUTIL_TOKEN_ENDPOINT},
};
// clang-format on

// ---- what the compiler checks ------------------------------------------------------------------------------------

/// Where the rows of the key that begins at a row end.
constexpr std::size_t endOfKey(std::size_t first) {
    std::size_t end = first + 1;
    while (end < std::size(kDefaults) && kDefaults[end].key == kDefaults[first].key) ++end;
    return end;
}

constexpr std::size_t countOfKeys() {
    std::size_t keys = 0;
    for (std::size_t first = 0; first < std::size(kDefaults); first = endOfKey(first)) ++keys;
    return keys;
}

constexpr bool hasDoubles() {
    for (std::size_t first = 0, end = 0; first < std::size(kDefaults); first = end) {
        end = endOfKey(first);
        for (std::size_t i = first; i < end; ++i) {
            for (std::size_t j = i + 1; j < end; ++j) {
                if (kDefaults[i].name == kDefaults[j].name) return true;
            }
        }
    }
    return false;
}

constexpr std::string_view kTokenPath = "/oauth2/v4/token";
constexpr std::size_t kLongestEndpoint = 45;

static_assert(std::size(kDefaults) == 506 + 2, "506 values, and one for each token key");
static_assert(countOfKeys() == 22 + 2, "22 keys, and two token keys; the rows of a key stand together");
static_assert(!hasDoubles(), "a value is listed twice");
static_assert(std::string_view(KVUTIL_TOKEN_ENDPOINT).size() <= kLongestEndpoint);
static_assert(std::string_view(KVUTIL_TOKEN_ENDPOINT).starts_with("https://"));
static_assert(std::string_view(KVUTIL_TOKEN_ENDPOINT).ends_with(kTokenPath));
static_assert(std::string_view(KVUTIL_STORAGE_HOST) != KVUTIL_IDENTITY_HOST);
static_assert(isTag(KVUTIL_STORAGE_HOST) && isTag(KVUTIL_IDENTITY_HOST), "the hosts are names of keys");

// ---- the loop ----------------------------------------------------------------------------------------------------

void writeText(KVTiXmlConfig* store, const Row& row, std::string_view folder, std::string_view text) {
    border::PathBuffer buffer;
    std::uint32_t length = 0;
    if (!border::copyText(buffer, sizeof buffer, folder) || !border::appendText(buffer, sizeof buffer, text)) return;
    kvCFGValueString(store, row.key.data(), row.name.data(), buffer, &length, 1);
}

void writeBytes(KVTiXmlConfig* store, const Row& row) {
    unsigned char buffer[64];
    std::memcpy(buffer, row.bytes.data(), row.bytes.size());
    auto length = static_cast<std::uint32_t>(row.bytes.size());
    kvCFGValueBinary(store, row.key.data(), row.name.data(), buffer, &length, 1);
}

void write(KVTiXmlConfig* store, const Row& row, const char* userFolder) {
    std::uint32_t number = row.dword;
    switch (row.type) {
        case Row::Type::dword:
            kvCFGValueDword(store, row.key.data(), row.name.data(), &number, 1);
            return;
        case Row::Type::text:
            writeText(store, row, "", row.text);
            return;
        case Row::Type::userFile:
            writeText(store, row, userFolder, row.text);
            return;
        case Row::Type::binary:
            writeBytes(store, row);
            return;
    }
}

}  // namespace
}  // namespace kv::config

using namespace kv::config;

std::uint32_t kvCFGDefaultZMW(KVTiXmlConfig* hConfig) {
    return kv::border::atBorder(kFailed, [&]() -> std::uint32_t {
        KVTiXmlConfig* store = kvCFGCheckHandle(hConfig);
        if (!isOpened(store)) return kFailed;
        kv::border::PathBuffer userFolder;
        userFolder[0] = '\0';
        kvOSGetConfigDir(userFolder, 1);  // named also where it can't be made
        for (const char* key : kTopKeys) kvCFGAddKeyString(store, key, nullptr, nullptr, KVCFG_KEY, nullptr);
        for (const Row& row : kDefaults) write(store, row, userFolder);
        kvCFGSave(store, nullptr, 0);
        return 0;
    });
}
