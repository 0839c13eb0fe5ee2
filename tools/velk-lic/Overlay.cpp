#include "Overlay.h"

#include <string>

#include <velk/velk.h>

#include "Console.h"
#include "Options.h"

void drawOverlays(const Options& o, VelkImage& picture) {
    if (o.meshPath.empty() && o.overlayPath.empty()) return;
    // A fresh pen per picture, so that every frame is drawn alike.
    VelkGraphics pen;
    console::clearLibraryError();
    if (!o.meshPath.empty() && !pen.drawUCD(picture, o.meshPath.c_str()))
        console::libraryFailure("cannot draw mesh '" + o.meshPath + "'");
    if (!o.overlayPath.empty() && !pen.drawFile(picture, o.overlayPath.c_str()))
        console::libraryFailure("cannot draw overlay '" + o.overlayPath + "'");
}
