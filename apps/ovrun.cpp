#include "console/ovrun.h"

int main(int argc, char** argv) { return orvane::ovrun_main(argc, argv); }
