// Sample WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused once.
// Status 1 when the message was not sent, or something else failed.

using System;
using System.Text.RegularExpressions;
using System.Web.Services.Protocols;

static class Sample
{
    static ResponseActionData Choice(string response, string action, bool isFinal)
    {
        // The "Specified" twin of a number or boolean tells whether it is sent at all.
        return new ResponseActionData {
            szResponse = response, szAction = action, bFinal = isFinal, bFinalSpecified = true
        };
    }

    static int Run(string[] args)
    {
        string pager = args[1], second = args.Length > 2 ? args[2] : null;
        var service = new Quorbel();
        // When the service is reached by another address than the description named when the class was made:
        // service.Url = "https://soap.plant.example/cgi-bin/quorbel-soap";

        // The arguments are the elements in the description's order; null, or false for "Specified", leaves one out.
        string text = service.SendStdMessage(
            pager, null, null, "oncall", null, 2, true, true, true,
            new[] { Choice("1", "ack", true), Choice("2", "escalate", false) },
            new[] { new CustomFieldData { szFieldName = "ticket", szFieldValue = "T-7" } },
            "Pump 4 <hot> & \"loud\"", "ops", false, false, null, second);
        // A message that could not be delivered is no fault: the text then is the transport's. The paging server names
        // a job.
        Match job = Regex.Match(text, @"job (\S+)");
        if (!job.Success) {
            Console.WriteLine("not sent: " + text.Trim());
            return 1;
        }
        Console.WriteLine("sent: " + text.Trim());

        QueryResult answer = service.QueryMessage(pager, null, null, job.Groups[1].Value, second);
        Console.WriteLine("query: " + answer.szResponseMessage);
        foreach (string line in answer.szResult ?? new string[0]) Console.WriteLine("  " + line);

        string added = service.AddGroup(pager, "admin", "secret", "night", "Night shift", null, null, false, false,
                                        null, true, true, false, false, second);
        Console.WriteLine("added: " + added.Trim());

        try {
            service.DeleteGroup(pager, "admin", "", "night", null);
        } catch (SoapException fault) {
            Console.WriteLine("fault: " + fault.Message);
        }
        return 0;
    }

    static int Main(string[] args)
    {
        try {
            return Run(args);
        } catch (SoapException fault) {
            Console.WriteLine("fault: " + fault.Message);
        } catch (Exception failure) {
            Console.WriteLine("no answer from the service: " + failure.Message);
        }
        return 1;
    }
}
