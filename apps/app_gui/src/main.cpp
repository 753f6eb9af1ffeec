#include "app_gui.h"

int main(int argc, char **argv) {
    return run_app_gui(argc, argv);
}
