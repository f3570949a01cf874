#ifndef TVERRHANDLERPTR_H
#define TVERRHANDLERPTR_H

class TVErrHandler;

// Adds a handler to the error singleton for the life of a scope. Removing
// it at the end deletes it if the handler manages its own deletion.
class TVErrHandlerPtr
{
public:
    explicit TVErrHandlerPtr(TVErrHandler* handler);
    TVErrHandlerPtr(const TVErrHandlerPtr&) = delete;
    TVErrHandlerPtr& operator=(const TVErrHandlerPtr&) = delete;
    ~TVErrHandlerPtr();

    TVErrHandler* get() const { return m_handler; }

private:
    TVErrHandler* m_handler;
};

#endif
