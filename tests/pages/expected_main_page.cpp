#include "tests/pages/expected_main_page.h"

#include <cwchar>

namespace {

constexpr std::uint32_t kCpuColour = 0xFF00C8C8;
constexpr std::uint32_t kGpuColour = 0xFF32C864;
constexpr std::uint32_t kWarningColour = 0xFFC8C850;

struct Graph {
    const wchar_t* label;
    std::uint32_t labelColour;
    int y;
    int value;
    int barValue;
    std::uint32_t level;
    std::uint32_t bar;
    std::uint32_t line;
};

void paintGraph(PagePainter& painter, const Graph& graph, const std::deque<int>& history) {
    painter.fill(4, graph.y + 100 - graph.value, 201, graph.value, graph.level);
    painter.fill(209, graph.y + 100 - graph.barValue, 18, graph.barValue, graph.bar);
    int x = 204;
    for (const int sample : history) {
        painter.verticalLine(x, graph.y + 99, graph.y + 99 - sample, graph.line);
        --x;
    }
    painter.text(
        {graph.label, 15, graph.labelColour, 6, static_cast<float>(graph.y + 81), TextPlace::TopLeft});
}

}  // namespace

void ExpectedMainPage::paint(PagePainter& painter, Ground ground) const {
    paintBackdrop(painter, ground);
    paintMail(painter, ground);
    paintCpu(painter);
    paintGpu(painter);
    paintMixer(painter);
    if (ground == Ground::Artwork) {
        paintIcons(painter);
    }
    painter.text({clock, 20, 0xFFFFFFFF, 160, 225, TextPlace::Centre});
}

void ExpectedMainPage::paintBackdrop(PagePainter& painter, Ground ground) const {
    switch (ground) {
        case Ground::Artwork:
            if (backdrop != nullptr) {
                painter.picture(backdrop);
                break;
            }
            painter.bitmapImage(108, 0, 0);
            painter.multiply(107);
            painter.pngImage(106, 0, 0);
            break;
        case Ground::Black:
            painter.clear(0xFF000000);
            break;
        case Ground::White:
            painter.clear(0xFFFFFFFF);
            break;
        case Ground::Empty:
            break;
    }
}

void ExpectedMainPage::paintMail(PagePainter& painter, Ground ground) const {
    if (snapshot->unreadMail <= 0) {
        return;
    }
    if (ground == Ground::Artwork) {
        painter.bitmapImage(104, 235, 155);
    }
    painter.text({L"x" + std::to_wstring(snapshot->unreadMail), 24, 0xFF005DAF, 270, 154, TextPlace::Near});
}

void ExpectedMainPage::paintCpu(PagePainter& painter) const {
    paintGraph(painter,
               {L"CPU",
                kCpuColour,
                4,
                static_cast<int>(snapshot->cpuLoad),
                snapshot->memoryLoad,
                0x64FF0000,
                0xC8FF3C00,
                0x96FF0000},
               cpuHistory);
    if (!snapshot->coreTempAvailable) {
        painter.text({L"Start CoreTemp!", 15, kCpuColour, 4, 6, TextPlace::TopLeft});
        return;
    }
    wchar_t vid[64];
    swprintf(vid, 64, L"%fv", static_cast<double>(snapshot->cpuVid));
    const std::wstring temperature =
        std::to_wstring(snapshot->cpuTemperature) + L" \u00B0" + (snapshot->cpuTempFahrenheit ? L"F" : L"C");
    painter.text({snapshot->cpuName, 15, kCpuColour, 4, 6, TextPlace::TopLeft});
    painter.text({snapshot->cpuClockText, 15, kCpuColour, 4, 26, TextPlace::TopLeft});
    painter.text({vid, 15, kCpuColour, 4, 46, TextPlace::TopLeft});
    painter.text({temperature, 20, kCpuColour, 205, 106, TextPlace::RightBottom});
}

void ExpectedMainPage::paintGpu(PagePainter& painter) const {
    if (!snapshot->gpuAvailable) {
        painter.text({L"No supported discreet GPU\nfound", 15, kWarningColour, 4, 113, TextPlace::TopLeft});
        return;
    }
    const GpuStats& gpu = snapshot->gpuStats;
    if (gpu.loadValid) {
        paintGraph(painter,
                   {L"GPU", kGpuColour, 109, gpu.load, gpu.memoryLoad, 0x64006FF0, 0xC8008BC1, 0x96006FF0},
                   gpuHistory);
    }
    painter.text({snapshot->gpuName, 15, kGpuColour, 4, 113, TextPlace::TopLeft});
    if (gpu.coreClockValid) {
        // Two decimals, cut and not rounded.
        const std::uint32_t hundredths = gpu.coreClock / 10;
        wchar_t clockText[64];
        swprintf(clockText, 64, L"%u.%02u MHz", hundredths / 100, hundredths % 100);
        painter.text({clockText, 15, kGpuColour, 4, 133, TextPlace::TopLeft});
    }
    if (gpu.temperatureValid) {
        painter.text({std::to_wstring(gpu.temperature) + L" \u00B0" + L"C",
                      20,
                      kGpuColour,
                      205,
                      210,
                      TextPlace::RightBottom});
    }
    if (!gpu.loadValid || !gpu.temperatureValid || !gpu.memoryLoadValid || !gpu.coreClockValid) {
        painter.text(
            {L"Errors fetching some data\nfrom GPU", 15, kWarningColour, 6, 150, TextPlace::TopLeft});
    }
}

void ExpectedMainPage::paintMixer(PagePainter& painter) const {
    const int left = snapshot->speakerLeftVolume;
    const int right = snapshot->speakerRightVolume;
    if (selectedChannel == 0) {
        const int master = snapshot->speakerMasterVolume;
        painter.text({std::to_wstring(master), 24, 0xFF000000, 253, 48, TextPlace::Centre});
    } else {
        painter.fill(selectedChannel == 1 ? 277 : 297, 1, 22, 105, 0xC800FFFF);
        const int volume = selectedChannel == 1 ? left : right;
        painter.text({std::to_wstring(volume), 24, 0xC8225D80, 253, 48, TextPlace::Centre});
    }
    painter.fill(280, 104 - left, 17, left, 0xC8225D80);
    painter.fill(300, 104 - right, 17, right, 0xC8225D80);
}

void ExpectedMainPage::paintIcons(PagePainter& painter) const {
    painter.pngImage(snapshot->microphoneMuted ? 136 : 130, 232, 112);
    painter.pngImage(snapshot->speakerMuted ? 137 : 131, 256, 112);
    switch (snapshot->gamepadBattery) {
        case 5:
            painter.pngImage(133, 274, 112);
            break;
        case 4:
            painter.pngImage(135, 274, 112);
            break;
        case 3:
            painter.pngImage(134, 274, 112);
            break;
        case 2:
            if (blinkOn) {
                painter.pngImage(132, 274, 112);
            }
            break;
        default:
            break;
    }
}
