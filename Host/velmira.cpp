#include "Command/VelmiraCommand.h"

int main(int argc, char** argv) { return Quillmere::Velmira::VelmiraCommand().run(argc, argv); }
