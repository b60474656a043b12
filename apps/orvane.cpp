#include "desktop/desktop.h"

int main(int argc, char** argv) { return orvane::desktop_main(argc, argv); }
