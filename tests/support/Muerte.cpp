#include "support/Muerte.h"

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

namespace velmorant::prueba {

namespace {

sqlite3_vfs* gOriginal = nullptr;
sqlite3_vfs gTrampa;
std::string gPatron;

constexpr int kMurioEnLaTrampa = 77;

int BorraOMuere(sqlite3_vfs*, const char* nombre, int sincroniza) {
    if (nombre && std::strstr(nombre, gPatron.c_str())) _exit(kMurioEnLaTrampa);
    return gOriginal->xDelete(gOriginal, nombre, sincroniza);
}

}  // namespace

bool MuereAlBorrar(const std::string& patron, const std::function<void()>& trabajo) {
    pid_t pid = fork();
    if (pid == 0) {
        gOriginal = sqlite3_vfs_find(nullptr);
        gTrampa = *gOriginal;
        gTrampa.zName = "velmorant-trampa";
        gTrampa.xDelete = BorraOMuere;
        gPatron = patron;
        sqlite3_vfs_register(&gTrampa, 1);
        try {
            trabajo();
        } catch (...) {
        }
        _exit(1);
    }
    int estado = 0;
    if (pid < 0 || waitpid(pid, &estado, 0) != pid) return false;
    return WIFEXITED(estado) && WEXITSTATUS(estado) == kMurioEnLaTrampa;
}

}  // namespace velmorant::prueba
