#include "upload/worker/UploadWorker.h"

int main() {
    return tavrine::runUploadWorker();
}
