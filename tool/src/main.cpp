// krlayout: lays out a route document with the krlayout library through the in-process host.
#include "ToolApplication.h"

#include <cairo.h>
#include <fontconfig/fontconfig.h>

#include <iostream>

int main(int argc, char** argv)
{
    int code = 0;
    {
        krtool::ToolApplication app(std::cout, std::cerr);
        code = app.run(argc, argv);
    }
    std::cout.flush();
    // Frees cairo's and fontconfig's caches, so that leak checkers see a clean exit.
    cairo_debug_reset_static_data();
    FcFini();
    return code;
}
