#!/bin/sh
# Runs the SOAP front end for nginx, see deploy/nginx.conf: stays in the foreground until it is ended.
#
# Replace @SITE@ by the site's directory. Started as root, remove the mark "#user" to run the program as @USER@,
# as whom nginx serves too; the socket is open to that user only.
#
# Of the three web servers' ways this one hands its whole environment on to the program, where proxy variables
# would lead commands astray: hence the clean one. It runs as many programs at a time as -c says. End the
# whole process group: the processes that -c started outlive the first one.
set -eu
cd /
rm -f "@SITE@/spool/fcgiwrap.sock"
set --
#user set -- -u @USER@
exec env -i PATH=/usr/sbin:/usr/bin:/bin spawn-fcgi -n -s "@SITE@/spool/fcgiwrap.sock" -M 0600 "$@" \
    -- /usr/sbin/fcgiwrap -c 128 -p "@SITE@/web/cgi-bin/quorbel-soap"
