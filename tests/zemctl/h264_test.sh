#!/usr/bin/env bash
# zemctl h264.
source "$(dirname "$0")/support.sh"

own='{"cameras":[{"h264Formats":[
  {"index":4,"width":640,"height":480,"subWidth":320,"subHeight":240,"maxBitRate":3000,"maxFps":60},
  {"type":0,"index":5,"width":160,"height":120},
  {"type":2,"index":200,"width":1280,"height":720}]}]}'
skype='{"cameras":[{"skypeUnit":true}]}'
unit='{"cameras":[{"h264Unit":true}]}'

# A camera that tells no formats: the default list.
expect 0 'source: default' $sim h264 list
expect 0 '  index  type  size       second size  max kbit/s  min kbit/s  max fps  min fps' $sim h264 list
expect 0 '  0      2     160x90     160x90       2500        100         30       5' $sim h264 list
expect 0 '  8      1     160x120    176x144      500         25          30       5' $sim h264 list
expect 0 '  24     1     1920x1080  384x216      2500        100         30       5' $sim h264 list
expect 0 '  2      1280x720  MJPG' $sim h264 list
expect 0 '"source": "default"' $sim --json h264 list
expect 0 '"size": "1600x1200"' $sim --json h264 list
expect 0 "this is the library's built-in default list; the camera's own was not told" $sim h264 list
expect 7 "this is the library's built-in default list; the camera's own was not read: set vendor 4" \
  $sim --simulator-fault fail@1 h264 list

# One that does. The entry of type 0 is skipped.
expect 0 'source: camera' $sim --simulator-options "$own" h264 list
expect 0 '  4      1     640x480   320x240      3000        100         60       5' $sim \
  --simulator-options "$own" h264 list
expect 0 '  200    2     1280x720  0x0          2500        100         30       5' $sim \
  --simulator-options "$own" h264 list
expect 2 'no H.264 format with the frame index 5' $sim --simulator-options "$own" h264 start 5

# By index: vendor commands, the Skype unit, the H.264 unit.
expect 0 'started: yes' $sim h264 start 23
expect 0 'size:    1600x1200' $sim h264 start 23
expect 7 'the camera did not take the resolution code' $sim --simulator-fault fail@4 h264 start 23
expect 7 '0x80004005' $sim --simulator-fault fail@4 h264 start 23
expect 0 '"started": true' $sim --json --simulator-options "$skype" h264 start 23
expect 8 'the camera has no h264 extension unit' $sim h264 start 0
expect 0 'started: yes' $sim --simulator-options "$unit" h264 start 0
expect 2 'no H.264 format with the frame index 25' $sim h264 start 25

# By resolution, and off.
expect 0 'size:    640x480' $sim h264 start 640x480
expect 0 'started: yes' $sim --simulator-options "$skype" h264 start 100x100
expect 7 'the camera did not take the resolution code' $sim --simulator-fault fail@1 h264 start 640x480
expect 7 '(not taken, 0x00000000)' $sim --simulator-fault fail@2 h264 start 640x480
expect 2 'is neither a frame index nor WIDTHxHEIGHT' $sim h264 start 640x0
expect 2 'is neither a frame index nor WIDTHxHEIGHT' $sim h264 start 65536
expect 2 'is neither a frame index nor WIDTHxHEIGHT' $sim h264 start 640x480x
expect 0 'stopped: yes' $sim h264 stop
expect 7 'the camera did not take' $sim --simulator-fault fail@1 h264 stop

# The running encoder.
expect 0 'fps: 30' $sim h264 fps 30
expect 2 'rate' $sim h264 fps 65536
expect 0 'bit rate: 2500' $sim h264 bitrate 2500
expect 0 'key frame: requested' $sim h264 keyframe
expect 0 '"key_frame": "requested"' $sim --json h264 keyframe
expect 5 'the camera refused the command' $sim --simulator-fault refuse@2=5 h264 fps 30
expect 7 'the command could not be written' $sim --simulator-fault unplug@1 h264 bitrate 1
expect 2 '"h264" is not whole; behind it comes one of list, start, stop, fps, bitrate, keyframe' $sim h264
expect 3 'no camera matches' h264 list
