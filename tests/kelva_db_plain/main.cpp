// A program that links another SQLite ahead of SQLCipher, as a host may do without knowing. Keys are then accepted and
// do nothing. Opens the file of the first argument with a key and prints how that ended.
#include <sqlite3.h>

#include <cstdio>

#include "kelva_db/KelvaDatabase.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    kelva::Configuration configuration;
    configuration.setKey("passphrase");
    try {
        kelva::DatabasePool database(arguments[1], configuration);
        std::printf("opened with SQLite %s\n", sqlite3_libversion());
    } catch (const kelva::DatabaseError& error) {
        std::printf("%s\n", std::string(kelva::failureKindName(error.kind())).c_str());
    }
}
