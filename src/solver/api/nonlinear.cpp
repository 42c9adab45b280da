/* nonlinear.cpp - the entry for general nonlinear functions, which the program evaluates. */
#include "solver/api/api.h"

int32_t ZLR_putnlfunc(ZLR_task *task, void *handle, ZLR_nlgetspfunc_t getsp, ZLR_nlgetvafunc_t getva)
{
    return api_task(task, [&]() -> int32_t {
        if ((getsp == nullptr) != (getva == nullptr)) return ZLR_RES_ERR_NULL_POINTER;
        if (getsp == nullptr) {
            task_edit(task)->functions.reset();
            return ZLR_RES_OK;
        }
        auto functions = std::make_shared<model_functions>();
        std::string complaint;
        functions->handle = handle;
        functions->get_structure = getsp;
        functions->get_values = getva;
        const int32_t res =
            functions_learn(task->problem->num_con, task->problem->num_var, functions.get(), &complaint);
        if (res != ZLR_RES_OK) {
            streams_printf(&task->streams, ZLR_STREAM_ERR, "Nonlinear functions: %s.\n", complaint.c_str());
            return res;
        }
        task_edit(task)->functions = std::move(functions);
        return ZLR_RES_OK;
    });
}

int32_t api_refuse_functions(ZLR_task *task, const char *what)
{
    if (task->problem->functions == nullptr) return ZLR_RES_OK;
    streams_printf(&task->streams, ZLR_STREAM_ERR, "%s is not for problems with general nonlinear functions.\n", what);
    return ZLR_RES_ERR_ARGUMENT;
}
