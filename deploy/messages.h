#ifndef QUORBEL_MESSAGES_H
#define QUORBEL_MESSAGES_H

/* Texts by number, for the message catalogue: cvmessages --config-dir DIR load messages.h
   docs/catalogue.md tells how a line must look. */

/* What a client is told when a command could not be delivered and nothing says why. */
#define MSG_POST_WITHOUT_TEXT 55001 /* The paging server gave no answer. Please tell your administrator. */

#define MSG_DISK_FULL 7202       /* Disk full */
#define MSG_SERVICE_STOPPED 7301 /* The service was stopped. Messages wait until it runs again. */
#define MSG_LICENCE_EXPIRED 7401 /* The licence of this server has expired. */

#endif
