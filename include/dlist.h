// A doubly linked list whose links live in the caller's records, with a recursive lock in its header.
//
// Put a d_ListNode at the head of a record, d_ListInitNode it once, and list it. The list owns nothing: records are
// the caller's, and a node is taken off before its record is freed. A node knows its list, so that a node can be
// checked, and stepped without the header. A node is on one list at a time.
//
// Every call takes null, and all but d_ListInit and d_ListInitNode take a list that is not initialised, as a refusal: 0
// or null, nothing changed. Each call runs under the list's lock and may be made from any thread, unless it says
// otherwise; to hold a list across several calls, as every walk needs that other threads could disturb, put d_ListLock
// and d_ListUnLock around them. The last error is not touched.
#ifndef DLIST_H
#define DLIST_H

#include <stdint.h>

#include "kvos/export.h"
#include "kvos/sync.h"

#ifdef __cplusplus
#include <cstddef>

extern "C" {
#endif

typedef struct d_List d_List;
typedef struct d_ListNode d_ListNode;

/** The head of any record that is listed. */
struct d_ListNode {
    d_ListNode *prev; /* null at the head */
    d_ListNode *next; /* null at the tail */
    d_List *parent;   /* null while on no list */
};

/* The bit of d_List::flags that marks an initialised list; no other bit is looked at. */
#define D_LIST_INITIALISED 256u

/** The header of a list, in memory of the caller's. Read the fields under the lock. */
struct d_List {
    d_ListNode *head;
    d_ListNode *tail;
    uint32_t count;           /* nodes listed */
    uint32_t flags;           /* D_LIST_INITIALISED, or 0 */
    uint64_t stamp;           /* kvOSGetMs at initialisation and at each recount, in milliseconds */
    kvOSCriticalSection lock; /* recursive */
};

/**
 * Makes an empty list, and its lock.
 *
 * @param pList  memory for the header, whatever it holds. Meant: a list in use is emptied without a look at its nodes,
 *               which keep naming it as their list; what d_ListClose says of them holds here as well.
 *
 * Threads: takes no lock. No other thread may be inside a call on the list, and nobody may hold its lock.
 *
 * @return 1; 0 for null and nothing else.
 */
KVUTIL_API uint32_t d_ListInit(d_List *pList);

/**
 * Ends a list: it is no longer initialised, its lock is destroyed, head, tail and count are cleared.
 *
 * Meant: the nodes are left as they are, each still naming the list and its neighbours. Should the list be made anew,
 * such a node passes for one of its own though it is not listed: d_ListInitNode it before anything else is done with
 * it. Passed to d_ListRemove, or as the neighbour of an insert into a list that is not empty, it leads to its old
 * neighbours, which nothing checks.
 *
 * Threads: takes no lock. No other thread may be inside a call on the list, and nobody may hold its lock.
 *
 * @return 1; 0 for null and for a list that is not initialised.
 */
KVUTIL_API uint32_t d_ListClose(d_List *pList);

/**
 * Takes the list's lock, which is recursive: calls of the same thread pass.
 *
 * @return 1; 0 when refused, the lock then not being held: also when ErrLogClose ended gErrLogList during the wait.
 */
KVUTIL_API uint32_t d_ListLock(d_List *pList);

/**
 * Gives the lock back, once for each d_ListLock.
 *
 * @return 1; 0 when refused. Meant: 1 also for a thread that does not hold the lock, which then stays as it is, while
 *         its depth, lock.qwCount, falls by 1 all the same.
 */
KVUTIL_API uint32_t d_ListUnLock(d_List *pList);

/**
 * Clears the three fields of a node that is on no list, whatever they hold.
 *
 * Meant: a listed node is not noticed, and its list keeps leading to it.
 *
 * Threads: takes no lock. No other thread may use the node meanwhile.
 *
 * @return 1; 0 for null.
 */
KVUTIL_API uint32_t d_ListInitNode(d_ListNode *pNode);

/** Lists a node first. Returns 1; 0 when refused, as every node is that is already on a list. */
KVUTIL_API uint32_t d_ListAddHead(d_List *pList, d_ListNode *pNode);

/** Lists a node last. Returns 1; 0 when refused, as every node is that is already on a list. */
KVUTIL_API uint32_t d_ListAddTail(d_List *pList, d_ListNode *pNode);

/**
 * Lists a node before another one.
 *
 * @param pAt    a node of this list. Meant: null lists the node last, not first.
 * @param pNode  a node on no list.
 * @return pNode; null when pNode is on a list, or pAt not on this one.
 */
KVUTIL_API d_ListNode *d_ListInsertAt(d_List *pList, d_ListNode *pAt, d_ListNode *pNode);

/**
 * Lists a node after another one.
 *
 * @param pAfter  a node of this list; null lists the node last.
 * @param pNode   a node on no list.
 * @return pNode; null when pNode is on a list, or pAfter not on this one.
 */
KVUTIL_API d_ListNode *d_ListInsert(d_List *pList, d_ListNode *pAfter, d_ListNode *pNode);

/** Takes the first node off, its three fields cleared. Returns it; null when the list is empty or refused. */
KVUTIL_API d_ListNode *d_ListRemoveHead(d_List *pList);

/** Takes the last node off, its three fields cleared. Returns it; null when the list is empty or refused. */
KVUTIL_API d_ListNode *d_ListRemoveTail(d_List *pList);

/**
 * Takes a node off this list, its three fields cleared.
 *
 * Messages: "d_ListRemove, Node is not of this list %08X %08X" with the low 32 bits of the addresses of the node's
 *           list and of this one, when they differ; a node on no list counts as such a node.
 *
 * @return pNode; null when it is not on this list, which then is unchanged, as is the other one.
 */
KVUTIL_API d_ListNode *d_ListRemove(d_List *pList, d_ListNode *pNode);

/** The first node; null when the list is empty or refused. */
KVUTIL_API d_ListNode *d_ListHead(d_List *pList);

/** The last node; null when the list is empty or refused. */
KVUTIL_API d_ListNode *d_ListTail(d_List *pList);

/** The node after this one; null at the tail, and for a node on no list or on a closed one. */
KVUTIL_API d_ListNode *d_ListNext(d_ListNode *pNode);

/** The node before this one; null at the head, and for a node on no list or on a closed one. */
KVUTIL_API d_ListNode *d_ListPrev(d_ListNode *pNode);

/**
 * The list that a node is on; null for a node on no list or on a closed one.
 *
 * Threads: any, and takes no lock: the answer is true for as long as no other thread may list the node or take it off.
 */
KVUTIL_API d_List *d_ListParent(d_ListNode *pNode);

/** How many nodes are listed, from the header; 0 when refused. */
KVUTIL_API uint32_t d_ListCount(d_List *pList);

/**
 * Counts the nodes by walking the list, stores the result as its count and the present clock as its stamp.
 *
 * Messages: "d_ListReCount lock %d" with the milliseconds that it took, from 11 on.
 *
 * @return the nodes counted; 0 when refused.
 */
KVUTIL_API uint32_t d_ListReCount(d_List *pList);

#ifdef __cplusplus
}

static_assert(sizeof(void *) != 8 || (sizeof(d_ListNode) == 24 && offsetof(d_ListNode, prev) == 0 &&
                                      offsetof(d_ListNode, next) == 8 && offsetof(d_ListNode, parent) == 16),
              "a node is three pointers at the head of its record");
static_assert(sizeof(void *) != 8 ||
                  (offsetof(d_List, head) == 0 && offsetof(d_List, tail) == 8 && offsetof(d_List, count) == 16 &&
                   offsetof(d_List, flags) == 20 && offsetof(d_List, stamp) == 24 && offsetof(d_List, lock) == 32),
              "the fields of a list follow each other in the stated order");
#endif

#endif
