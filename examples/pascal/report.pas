// Says what a recording is, and whether it is whole; makes an AVI file of it, too, when that is named.
//
// fpc -Fu../../bindings/pascal report.pas, and marvo.dll beside the program
// report RECORDING [NEW.avi]
program report;

{$IFDEF FPC}
  {$MODE OBJFPC}{$H+}
{$ENDIF}
{$APPTYPE CONSOLE}

uses
  SysUtils, marvo;

function TimeCode(const info: Tmarvo_frame_info): string;
begin
  if info.time_code_known = 0 then
    Result := 'no time code'
  else
    Result := Format('%.2d:%.2d:%.2d:%.2d', [info.time_code_hours, info.time_code_minutes,
      info.time_code_seconds, info.time_code_frames]);
end;

procedure Frames(const recording: UTF8String);
var
  reader: Tmarvo_reader;
  info: Tmarvo_recording_info;
  found: Tmarvo_frame_info;
  frame: array of Byte;
  number: UInt64;
  i, sum: Integer;
begin
  MarvoCheck(marvo_reader_open(PAnsiChar(recording), @reader));
  try
    MarvoClear(info, SizeOf(info));
    MarvoCheck(marvo_reader_info(reader, @info));
    WriteLn(recording, ': ', info.frames, ' frames, ', info.duration_100ns / 1e7 : 0 : 2, ' s');
    SetLength(frame, info.frame_bytes);
    number := 0;
    while number < info.frames do
    begin
      MarvoClear(found, SizeOf(found));
      MarvoCheck(marvo_reader_read(reader, number, @frame[0], Length(frame), @found));
      sum := 0;
      for i := 0 to 79 do
        sum := sum + frame[i];
      WriteLn('frame ', number, ': ', TimeCode(found), ', ', found.bytes, ' bytes, ', sum);
      if info.frames > 1 then
        number := number + info.frames - 1
      else
        number := 1;
    end;
  finally
    marvo_reader_close(reader);
  end;
end;

function Tell(user: Pointer; offset: UInt64; text: PAnsiChar): Integer; stdcall;
begin
  WriteLn('at byte ', offset, ': ', text);
  Result := 0;
end;

procedure Run(const recording, copy: UTF8String);
var
  verified: Tmarvo_verify_result;
  options: Tmarvo_copy_options;
  made: Tmarvo_copy_result;
begin
  WriteLn('marvo ', marvo_version_text());
  Frames(recording);
  MarvoClear(verified, SizeOf(verified));
  MarvoCheck(marvo_verify(PAnsiChar(recording), @Tell, nil, nil, @verified));
  WriteLn(verified.faults, ' faults');
  if copy <> '' then
  begin
    MarvoClear(options, SizeOf(options));
    options.last := MARVO_TO_THE_END;
    options.flags := MARVO_REPLACE;
    MarvoClear(made, SizeOf(made));
    MarvoCheck(marvo_export(PAnsiChar(recording), PAnsiChar(copy), @options, nil, nil, @made));
    WriteLn(copy, ': ', made.frames, ' frames');
  end;
end;

begin
  try
    Run(UTF8String(ParamStr(1)), UTF8String(ParamStr(2)));
  except
    on failure: EMarvo do
    begin
      WriteLn(StdErr, 'result ', failure.Code, ': ', failure.Message);
      ExitCode := 1;
    end;
  end;
end.
