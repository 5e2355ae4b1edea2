#include <windows.h>

#include "app/start.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    return startKelvaro(instance);
}
