#include "tarvobase/notes/NotesUseCases.h"

#include "tarvobase/notes/internal/AddNoteDM.h"
#include "tarvobase/notes/internal/EditNoteDM.h"

namespace tarvo {

void AddNotesUsecase::run(std::shared_ptr<const Request> request, UICallback) { dataManager->addNote(request->record); }
void EditNotesUsecase::run(std::shared_ptr<const Request> request, UICallback) {
    dataManager->editNote(request->record);
}

}  // namespace tarvo
