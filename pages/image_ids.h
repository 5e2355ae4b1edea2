// Numbers of the image resources, shared by the pages and by artwork/artwork.rc. Plain defines, because the
// resource compiler reads this file too. IDB_: standard bitmap resources; IDP_: resources of the type "PNG".
#pragma once

// Main page: background, multiplied by shade, overlay on top; the picture stands alone.
#define IDB_MAIL 104
#define IDB_PICTURE 105
#define IDP_OVERLAY 106
#define IDB_SHADE 107
#define IDB_BACKGROUND 108

// Status icons of the main page. The wired gamepad is carried along but not shown.
#define IDP_BATTERY_WIRED 129
#define IDP_MICROPHONE_ON 130
#define IDP_SPEAKER_ON 131
#define IDP_BATTERY_EMPTY 132
#define IDP_BATTERY_FULL 133
#define IDP_BATTERY_LOW 134
#define IDP_BATTERY_MEDIUM 135
#define IDP_MICROPHONE_MUTED 136
#define IDP_SPEAKER_MUTED 137

// Audio device page and options page.
#define IDB_LIST_BACKGROUND 304
