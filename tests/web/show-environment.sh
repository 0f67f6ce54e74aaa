#!/bin/sh
# Stands in for the program, to show what it would be started with.
printf 'Content-type: text/xml\n\n'
env
